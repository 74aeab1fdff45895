#pragma once

#include "Platform/Dialogs.h"

#include <QFileDialog>
#include <QList>
#include <QUrl>

#include <memory>
#include <vector>

namespace stemvault::dialogs {

/// The window of an open panel: the toolkit's own on every desktop, so that title, message and
/// focus are the same everywhere. It creates folders if the panel allows it, and deletes nothing.
class OpenPanelWindow final : public QFileDialog {
public:
    explicit OpenPanelWindow(const OpenPanel& panel);
    ~OpenPanelWindow() override;

    /// Destroys a window that is no longer needed as soon as it has read the folder that it shows.
    /// Destroying it earlier would block while a drive does not respond.
    static void endWhenRead(std::unique_ptr<OpenPanelWindow> window);

    /// The chosen items that exist. An item whose name is not UTF-8 cannot be chosen, because the
    /// toolkit represents the name with replacement characters.
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

    // The toolkit saves these two for all programs, so the destructor restores them.
    QByteArray usualColumns; ///< The state of the columns.
    QList<QUrl> usualPlaces; ///< The entries of the side bar.
    bool isReading = false; ///< The shown folder is still being read.
    bool isLeft = false; ///< The window must be destroyed when that is done.
};

} // namespace stemvault::dialogs
