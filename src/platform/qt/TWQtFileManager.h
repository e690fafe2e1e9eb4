#pragma once

#include "platform/TWFileManager.h"

#include <QObject>
#include <QUrl>

// Asks org.freedesktop.FileManager1 on the session bus. If no file manager answers, opens the folder like a document.
class TWQtFileManager final : public QObject, public TWFileManager {
    Q_OBJECT

public:
    // Opens a document with the program that the desktop uses for it; false if there is none.
    using OpenDocument = std::function<bool(const QUrl&)>;

    explicit TWQtFileManager(OpenDocument);

    void showItem(const std::string& path, Done) override;
    void showFolder(const std::string& path, Done) override;
    void open(const std::string& path, Done) override;

private:
    void call(const char* method, const std::string& path, const std::string& folder, Done);

    const OpenDocument openDocument_;
};
