#pragma once

#include <QString>

#include <string>
#include <string_view>

// The only conversions between Qt's strings and ours.
namespace TWQtText {

// For showing: bytes that are no UTF-8 and control characters made visible. Not for anything that is written back.
QString shown(std::string_view bytes);

// Exact, for texts that are valid UTF-8 and that the user edits.
QString exact(std::string_view text);
std::string bytes(const QString& text);

}
