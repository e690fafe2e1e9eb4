#pragma once

#include <memory>
#include <span>
#include <string_view>

class QWidget;
class TWEditors;
class TWSheet;

// The sheet of one editor. Windows make their menus and buttons from this table and know no editor by name.
struct TWSheetRow {
    const char* editor; // its name in TWEditorTable, or "dictionary"
    const char* menuTitle; // untranslated

    // Makes the sheet on that window. The editors must outlive it.
    std::unique_ptr<TWSheet> (*make)(TWEditors&, QWidget* window);
};

std::span<const TWSheetRow> TWSheetTable();

// Returns nullptr if the editor has no sheet.
const TWSheetRow* TWSheetNamed(std::string_view editor);
