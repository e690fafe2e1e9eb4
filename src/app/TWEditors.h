#pragma once

#include "editors/TWDictionaryWindowController.h"
#include "editors/TWEditor.h"
#include "editors/TWEditorContext.h"

#include <span>
#include <string_view>

// One editor. The dictionary has no row, because all editors may use it.
struct TWEditorRow {
    const char* name; // used by the table of cleaners and the table of sheets
    std::unique_ptr<TWEditor> (*make)(const TWEditorContext&, const TWDictionaryWindowController&);
};

std::span<const TWEditorRow> TWEditorTable();

// All editors, made at the start and loaded once. Main thread.
class TWEditors final {
public:
    explicit TWEditors(const TWEditorContext&);

    void awakeFromNib(TWLaunchKind);

    TWDictionaryWindowController& dictionary() { return dictionary_; }
    const TWDictionaryWindowController& dictionary() const { return dictionary_; }

    // The editor of that class; aborts if it is not in the table.
    template <typename Editor>
    Editor& get() const
    {
        for (const auto& editor : editors_) {
            if (auto* found = dynamic_cast<Editor*>(editor.get()))
                return *found;
        }
        std::abort();
    }

    // One line for each list that could not be read.
    std::vector<std::string> problems() const;

    // All editors, the dictionary first.
    std::vector<TWEditor*> all();

private:
    TWDictionaryWindowController dictionary_;
    std::vector<std::unique_ptr<TWEditor>> editors_; // in the order of the table
};
