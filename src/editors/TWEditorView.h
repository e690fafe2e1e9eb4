#pragma once

#include <string>

// What every editor's sheet offers its controller. Main thread.
class TWEditorView {
public:
    virtual void closeSheet() = 0;

    // The help page of that name.
    virtual void openHelpAnchor(const std::string& anchor) = 0;

protected:
    ~TWEditorView() = default;
};
