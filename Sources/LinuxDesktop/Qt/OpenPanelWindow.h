#pragma once

#include "Platform/Dialogs.h"

#include <QFileDialog>

#include <vector>

namespace stemvault {

/// A panel on the screen: the toolkit's own on every desktop, so that title, message and focus are
/// the same everywhere. It creates folders where the panel allows it, and deletes nothing.
class OpenPanelWindow final : public QFileDialog {
public:
    explicit OpenPanelWindow(const OpenPanel& panel);
    ~OpenPanelWindow() override;

    /// What was chosen, as far as it is there. A name that is not UTF-8 cannot be chosen: the
    /// toolkit knows it only by replacement characters.
    [[nodiscard]] std::vector<FileURL> chosen() const;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void showMessage(const QString& message);
    void keepFromDeleting();
    void showOnlyFolders();
    void allowSeveral();

    QByteArray usualColumns; ///< The toolkit keeps the state of the columns for all programs.
};

} // namespace stemvault
