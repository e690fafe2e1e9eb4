#pragma once

#include <QIcon>

#include <map>
#include <string>

class QWidget;

// The icons of applications in a view. Loads each when it is first needed and keeps it.
class TWApplicationIcons final {
public:
    explicit TWApplicationIcons(const QWidget& view)
        : view_(view)
    {
    }

    // The name is that in TWApplication. If there is no such icon, this is the one of a program.
    const QIcon& icon(const std::string& name) const;

private:
    QIcon load(const std::string& name) const;

    const QWidget& view_;
    mutable std::map<std::string, QIcon> icons_; // by name
};
