#pragma once

#include <string>
#include <string_view>

// Paths are byte strings. Nothing here touches the file system.
namespace TWPath {

// "/a/b//" becomes "/a/b"; "/" and "//" become "/". A trailing slash would make the system follow a link.
std::string withoutTrailingSlashes(std::string_view path);

// The path as system calls take it: without trailing slashes, and "" if it holds a NUL, which would make the system see
// another, shorter path.
std::string systemPath(std::string_view path);

// A leading "~" or "~/" stands for the home folder.
std::string expandTilde(std::string_view path, std::string_view home);

// The reverse: a path at or below the home folder begins with "~".
std::string abbreviateTilde(std::string_view path, std::string_view home);

// Tilde expanded; "." and "..", empty components and trailing slashes removed. Links are not resolved.
std::string standardize(std::string_view path, std::string_view home);

// The text after the last slash: "" for a path that ends with one.
std::string_view lastComponent(std::string_view path);

// The part before the last component, without its slash; "/" for a path directly below the root.
std::string_view parent(std::string_view path);

// True when path is folder itself or lies below it. Both without trailing slashes.
bool isAtOrBelow(std::string_view path, std::string_view folder);

}
