#pragma once

#include <string>
#include <string_view>

// Paths are byte strings. Nothing here touches the file system. Any thread.
namespace TWPath {

// "/a/b//" becomes "/a/b"; "/" and "//" become "/". A trailing slash would make the kernel follow a symbolic link.
std::string withoutTrailingSlashes(std::string_view path);

// The path for system calls: without trailing slashes, or "" if it holds a NUL, at which the kernel would cut it short.
std::string systemPath(std::string_view path);

// Replaces a leading "~" or "~/" by the home folder.
std::string expandTilde(std::string_view path, std::string_view home);

// The reverse: replaces the home folder at the beginning of the path by "~".
std::string abbreviateTilde(std::string_view path, std::string_view home);

// Expands the tilde and removes ".", "..", empty components and trailing slashes. Does not resolve symbolic links.
std::string standardize(std::string_view path, std::string_view home);

// The text after the last slash: "" for a path that ends with a slash.
std::string_view lastComponent(std::string_view path);

// The part before the last component, without its slash; "/" for a path directly below the root.
std::string_view parent(std::string_view path);

// The path of an entry of the folder, which is without trailing slashes.
std::string join(std::string_view folder, std::string_view name);

// True if path is the folder itself or is below it. Both must be without trailing slashes.
bool isAtOrBelow(std::string_view path, std::string_view folder);

}
