#pragma once

#include <QString>

#include <optional>
#include <string>
#include <string_view>

// All conversions between Qt's strings and ours are here.
namespace TWQtText {

// For display only: makes bytes that are not UTF-8 and control characters visible. Never write the result back.
QString shown(std::string_view bytes);

// Like shown(), but a newline stays one.
QString shownLines(std::string_view bytes);

// Like shown(), but for a tooltip, where a "<" must not be taken for markup.
QString toolTip(std::string_view bytes);

// Like shown(), but shortened in the middle, for a window's title, whose end would be cut off.
QString titlePart(std::string_view bytes);

// An exact conversion, for texts that are valid UTF-8 and that the user edits.
QString exact(std::string_view text);
std::string bytes(const QString& text);

// A path to pass to Qt.
QString path(const std::string& path);

// The bytes of a path from Qt. Nothing if Qt has replaced bytes that are not UTF-8, because the path would lead
// elsewhere.
std::optional<std::string> pathBytes(const QString& path);

}
