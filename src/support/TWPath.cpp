#include "support/TWPath.h"

#include <vector>

std::string TWPath::withoutTrailingSlashes(std::string_view path)
{
    while (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    return std::string(path);
}

std::string TWPath::systemPath(std::string_view path)
{
    return path.find('\0') == std::string_view::npos ? withoutTrailingSlashes(path) : std::string();
}

std::string TWPath::expandTilde(std::string_view path, std::string_view home)
{
    if (path != "~" && !path.starts_with("~/"))
        return std::string(path);
    std::string expanded = withoutTrailingSlashes(home);
    path.remove_prefix(1);
    if (expanded == "/" && !path.empty())
        expanded.clear();
    return expanded.append(path);
}

std::string TWPath::abbreviateTilde(std::string_view path, std::string_view home)
{
    const std::string folder = withoutTrailingSlashes(home);
    // If the home is "/", every path is below it and "~" would say nothing.
    if (folder.empty() || folder == "/" || !isAtOrBelow(path, folder))
        return std::string(path);
    return std::string("~").append(path.substr(folder.size()));
}

std::string TWPath::standardize(std::string_view path, std::string_view home)
{
    const std::string expanded = expandTilde(path, home);
    const bool absolute = expanded.starts_with('/');
    std::vector<std::string_view> kept;
    for (std::string_view rest = expanded; !rest.empty();) {
        const std::string_view component = rest.substr(0, rest.find('/'));
        rest.remove_prefix(component.size() < rest.size() ? component.size() + 1 : rest.size());
        if (component.empty() || component == ".")
            continue;
        const bool up = component == "..";
        if (up && !kept.empty() && kept.back() != "..")
            kept.pop_back();
        else if (!up || !absolute)
            kept.push_back(component);
    }
    std::string result = absolute ? "/" : "";
    for (const std::string_view component : kept) {
        if (component.data() != kept.front().data())
            result += '/';
        result += component;
    }
    return result.empty() && !path.empty() ? "." : result;
}

std::string_view TWPath::lastComponent(std::string_view path)
{
    return path.substr(path.rfind('/') + 1); // without a slash npos + 1 is 0
}

std::string_view TWPath::parent(std::string_view path)
{
    const std::size_t slash = path.rfind('/');
    if (slash == std::string_view::npos)
        return {};
    const std::size_t end = path.find_last_not_of('/', slash);
    return path.substr(0, end == std::string_view::npos ? 1 : end + 1);
}

std::string TWPath::join(std::string_view folder, std::string_view name)
{
    std::string path(folder);
    if (path != "/")
        path += '/';
    return path.append(name);
}

bool TWPath::isAtOrBelow(std::string_view path, std::string_view folder)
{
    if (!path.starts_with(folder))
        return false;
    return path.size() == folder.size() || folder == "/" || path[folder.size()] == '/';
}
