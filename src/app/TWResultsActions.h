#pragma once

#include "platform/TWBackgroundStream.h"
#include "platform/TWFileManager.h"
#include "platform/TWFileSystem.h"
#include "platform/TWPlaces.h"

// What the user can do with the path that a line of the results or a row of a sheet names. Looks at the disk in the
// background. Calls come on a later turn; destroying the object silences them. Main thread.
class TWResultsActions final {
public:
    struct Context {
        TWRunLoop& runLoop;
        const TWFileSystem& fileSystem;
        const TWPlaces& places;
        TWFileManager& fileManager;

        // Puts a path on the keep list and saves that. Returns "" or one line for the user.
        std::function<std::string(const std::string& path)> keep;
    };

    // Gets one line that says what happened, or "" if there is nothing to say.
    using Said = std::function<void(const std::string&)>;

    explicit TWResultsActions(Context);

    // Finds out whether the path exists. A call replaces an earlier one that has not been answered. An item about which
    // the disk cannot be asked counts as existing.
    void look(const std::string& path, std::function<void(bool exists)> found);
    void dropLook() { looking_.reset(); }

    // Shows the item in the file manager; if it is gone, the nearest folder around it that exists. In a sandbox shows
    // nothing outside of it.
    void show(const std::string& path, Said);

    // Opens the item, if it exists, with the program that the desktop uses for it.
    void open(const std::string& path, Said);

    // Puts the item on the keep list if it exists. Returns one line that says what happened.
    std::string keep(const std::string& path);

private:
    struct Place {
        std::string realPath; // of the item or the nearest folder
        TWPresence presence; // of the item
    };

    static Place nearest(const TWFileSystem&, const std::string& path);
    void showPlace(const std::string& path, const Place&, const Said&);

    const std::shared_ptr<const int> life_ = std::make_shared<const int>(0); // expires with this object
    Context context_;
    std::unique_ptr<TWBackgroundStream<bool>> looking_;
    std::unique_ptr<TWBackgroundStream<Place>> finding_;
    std::unique_ptr<TWBackgroundStream<TWPresence>> opening_;
};
