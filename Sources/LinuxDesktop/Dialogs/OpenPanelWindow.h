#pragma once

#include "Platform/Dialogs.h"

#include <QFileDialog>
#include <QList>
#include <QUrl>

#include <memory>
#include <vector>

namespace stemvault {

/// A panel on the screen: the toolkit's own on every desktop, so that title, message and focus are
/// the same everywhere. It creates folders where the panel allows it, and deletes nothing.
class OpenPanelWindow final : public QFileDialog {
public:
    explicit OpenPanelWindow(const OpenPanel& panel);
    ~OpenPanelWindow() override;

    /// Destroys a window that is done with, though not before it has read the folder that it shows:
    /// on a drive that does not answer that would wait.
    static void endWhenRead(std::unique_ptr<OpenPanelWindow> window);

    /// What was chosen, as far as it is there. A name that is not UTF-8 cannot be chosen: the
    /// toolkit knows it only by replacement characters.
    [[nodiscard]] std::vector<FileURL> chosen() const;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void watchReading();
    void addPlaces();
    void showMessage(const QString& message);
    void keepFromDeleting();
    void showPlainToolTips();
    void showOnlyFolders();
    void allowSeveral();

    // The toolkit keeps these for all programs.
    QByteArray usualColumns; ///< The state of the columns.
    QList<QUrl> usualPlaces; ///< What is listed at the side.
    bool isReading = false; ///< The folder that it shows.
    bool isLeft = false; ///< To be destroyed when that is read.
};

} // namespace stemvault
