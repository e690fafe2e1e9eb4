#pragma once

#include <string>

// The operations of every editor's sheet that its controller uses. Main thread.
class TWEditorView {
public:
    virtual void closeSheet() = 0;

    // Shows the help page with that name.
    virtual void openHelpAnchor(const std::string& anchor) = 0;

protected:
    ~TWEditorView() = default;
};
