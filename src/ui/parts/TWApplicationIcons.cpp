#include "ui/parts/TWApplicationIcons.h"

#include "ui/parts/TWQtText.h"

#include <QStyle>
#include <QWidget>

#include <filesystem>

const QIcon& TWApplicationIcons::icon(const std::string& name) const
{
    const auto loaded = icons_.find(name);
    return loaded != icons_.end() ? loaded->second : icons_.emplace(name, load(name)).first->second;
}

// Reads only regular files, because a description may name anything.
QIcon TWApplicationIcons::load(const std::string& name) const
{
    QIcon icon;
    std::error_code error;
    if (!name.starts_with('/'))
        icon = QIcon::fromTheme(TWQtText::exact(name));
    else if (std::filesystem::is_regular_file(name, error))
        icon = QIcon(TWQtText::path(name));
    if (icon.isNull() || icon.pixmap(1).isNull())
        icon = QIcon::fromTheme("application-x-executable", view_.style()->standardIcon(QStyle::SP_FileIcon));
    return icon;
}
