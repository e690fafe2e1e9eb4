#pragma once

#include <functional>
#include <string>

// The desktop's file manager and the programs that it opens files with. Paths are absolute. Main thread.
class TWFileManager {
public:
    virtual ~TWFileManager() = default;

    // Tells whether a window or a program was asked for successfully. Called once, on a later turn, unless the object
    // is destroyed before.
    using Done = std::function<void(bool)>;

    // Opens the folder around the item and selects the item.
    virtual void showItem(const std::string& path, Done) = 0;

    virtual void showFolder(const std::string& path, Done) = 0;

    // Opens the file or folder with the program that the desktop uses for it.
    virtual void open(const std::string& path, Done) = 0;
};
