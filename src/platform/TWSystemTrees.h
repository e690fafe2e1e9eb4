#pragma once

// Folders that belong to the system with everything in them, except for TWLocalTree.
inline constexpr const char* TWSystemTrees[]
    = { "/bin", "/boot", "/lib", "/lib32", "/lib64", "/libx32", "/proc", "/sbin", "/sys", "/usr" };
inline constexpr auto TWLocalTree = "/usr/local";
