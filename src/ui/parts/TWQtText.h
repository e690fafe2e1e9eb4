#pragma once

#include <QString>

#include <optional>
#include <string>
#include <string_view>

// The only conversions between Qt's strings and ours.
namespace TWQtText {

// For showing only: bytes that are not UTF-8 and control characters are made visible. Never write the result back.
QString shown(std::string_view bytes);

// As shown(), for a tooltip: a "<" in it is never taken for markup.
QString toolTip(std::string_view bytes);

// Exact, for texts that are valid UTF-8 and that the user edits.
QString exact(std::string_view text);
std::string bytes(const QString& text);

// A path to hand to Qt.
QString path(const std::string& path);

// A path that Qt handed out. Nothing if Qt has replaced bytes that are not UTF-8: the path would lead elsewhere.
std::optional<std::string> pathBytes(const QString& path);

}
