#pragma once

#include "app/TWFolderListing.h"
#include "platform/TWPlaces.h"

#include <QDialog>

class QLabel;
class QPushButton;
class QTreeWidget;
class TWSpinner;
class TWTextLabel;

// Shows what is in a folder, one level at a time: Return or a double click opens a subfolder, Up leads back, but never
// out of the first folder. Reads in the background and changes nothing.
class TWContentsDialog final : public QDialog {
    Q_OBJECT

public:
    // No component of the path may be a symbolic link. The file system and the places must outlive the dialog and the
    // run loop's background work.
    TWContentsDialog(TWRunLoop&, const TWFileSystem&, const TWPlaces&, const std::string& realPath, QWidget* parent);

protected:
    void keyPressEvent(QKeyEvent*) override;

private:
    void list(const std::string& path);
    void openCurrent();
    void showEntries();
    void up();

    TWRunLoop& runLoop_;
    const TWFileSystem& fileSystem_;
    const TWPlaces& places_;
    const std::string first_; // the folder in which it began
    std::string path_;
    std::unique_ptr<TWFolderListing> listing_;
    TWTextLabel* pathLabel_;
    QTreeWidget* entries_;
    QLabel* sentence_;
    TWSpinner* spinner_;
    QPushButton* up_;
};
