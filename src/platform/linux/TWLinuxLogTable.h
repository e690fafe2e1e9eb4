#pragma once

#include <cstdint>

// The user's folders, or those that a Flatpak has in their place.
enum class TWLinuxBase : std::uint8_t { Home, Config, Data, State, Cache };

enum class TWLinuxLogKind : std::uint8_t { Folder, File };

// A place where a program writes logs.
struct TWLinuxLogPlace {
    const char* program; // for the user
    const char* path; // below the base; "*" stands for any characters, once, in one component
    TWLinuxBase base;
    TWLinuxLogKind kind = TWLinuxLogKind::Folder;
};

// Only what holds nothing but logs or crash reports, because ticking a folder deletes everything in it. So the folder
// above is named where logs lie beside other files. Programs for chats are left out: many keep the chats in a folder
// called "logs". Databases call their journals logs, too.
inline constexpr TWLinuxLogPlace TWLinuxLogPlaces[] = {
    // The session
    { "Services and programs", "log", TWLinuxBase::State },
    { "X server", "xorg", TWLinuxBase::Data },
    { "X session", ".xsession-errors*", TWLinuxBase::Home, TWLinuxLogKind::File },
    { "SDDM session", "sddm/*-session.log", TWLinuxBase::Data, TWLinuxLogKind::File },
    { "GDM session", "gdm/session.log*", TWLinuxBase::Cache, TWLinuxLogKind::File },
    { "LXDE session", "lxsession/*/run.log", TWLinuxBase::Cache, TWLinuxLogKind::File },
    { "Upstart session", "upstart", TWLinuxBase::Cache },

    // Browsers and mail
    { "Firefox, sent crash reports", ".mozilla/firefox/Crash Reports/submitted", TWLinuxBase::Home },
    { "Firefox, unsent crash reports", ".mozilla/firefox/Crash Reports/pending", TWLinuxBase::Home },
    { "Firefox, sent crash reports", "mozilla/firefox/Crash Reports/submitted", TWLinuxBase::Config },
    { "Firefox, unsent crash reports", "mozilla/firefox/Crash Reports/pending", TWLinuxBase::Config },
    { "Firefox, sent crash reports", "snap/firefox/common/.mozilla/firefox/Crash Reports/submitted",
        TWLinuxBase::Home },
    { "Firefox, unsent crash reports", "snap/firefox/common/.mozilla/firefox/Crash Reports/pending",
        TWLinuxBase::Home },
    { "Thunderbird, sent crash reports", ".thunderbird/Crash Reports/submitted", TWLinuxBase::Home },
    { "Thunderbird, unsent crash reports", ".thunderbird/Crash Reports/pending", TWLinuxBase::Home },
    { "Chrome, sent crash reports", "google-chrome/Crash Reports/completed", TWLinuxBase::Config },
    { "Chrome, unsent crash reports", "google-chrome/Crash Reports/pending", TWLinuxBase::Config },
    { "Chromium, sent crash reports", "chromium/Crash Reports/completed", TWLinuxBase::Config },
    { "Chromium, unsent crash reports", "chromium/Crash Reports/pending", TWLinuxBase::Config },
    { "Brave, sent crash reports", "BraveSoftware/Brave-Browser/Crash Reports/completed", TWLinuxBase::Config },
    { "Brave, unsent crash reports", "BraveSoftware/Brave-Browser/Crash Reports/pending", TWLinuxBase::Config },
    { "Edge, sent crash reports", "microsoft-edge/Crash Reports/completed", TWLinuxBase::Config },
    { "Edge, unsent crash reports", "microsoft-edge/Crash Reports/pending", TWLinuxBase::Config },
    { "Vivaldi, sent crash reports", "vivaldi/Crash Reports/completed", TWLinuxBase::Config },
    { "Vivaldi, unsent crash reports", "vivaldi/Crash Reports/pending", TWLinuxBase::Config },

    // Editors and tools for programmers
    { "Visual Studio Code", "Code/logs", TWLinuxBase::Config },
    { "Visual Studio Code Insiders", "Code - Insiders/logs", TWLinuxBase::Config },
    { "Code - OSS", "Code - OSS/logs", TWLinuxBase::Config },
    { "VSCodium", "VSCodium/logs", TWLinuxBase::Config },
    { "Cursor", "Cursor/logs", TWLinuxBase::Config },
    { "Zed", "zed/logs", TWLinuxBase::Data },
    { "Sublime Text", "sublime-text/Log", TWLinuxBase::Config },
    { "Neovim", "nvim/log", TWLinuxBase::State, TWLinuxLogKind::File },
    { "Neovim", "nvim/*.log", TWLinuxBase::State, TWLinuxLogKind::File },
    { "Helix", "helix/helix.log", TWLinuxBase::Cache, TWLinuxLogKind::File },
    { "JetBrains", "JetBrains/*/log", TWLinuxBase::Cache },
    { "JetBrains Toolbox", "JetBrains/Toolbox/logs", TWLinuxBase::Data },
    { "Android Studio", "Google/AndroidStudio*/log", TWLinuxBase::Cache },
    { "NetBeans", ".netbeans/*/var/log", TWLinuxBase::Home },
    { "DBeaver", "DBeaverData/workspace6/.metadata/dbeaver-debug*.log", TWLinuxBase::Data, TWLinuxLogKind::File },
    { "MySQL Workbench", ".mysql/workbench/log", TWLinuxBase::Home },
    { "pgAdmin", ".pgadmin/pgadmin4.log*", TWLinuxBase::Home, TWLinuxLogKind::File },
    { "GitHub Desktop", "GitHub Desktop/logs", TWLinuxBase::Config },
    { "GitKraken", ".gitkraken/logs", TWLinuxBase::Home },
    { "Postman", "Postman/logs", TWLinuxBase::Config },
    { "Insomnia", "Insomnia/logs", TWLinuxBase::Config },
    { "Anaconda Navigator", ".anaconda/navigator/logs", TWLinuxBase::Home },
    { "npm", ".npm/_logs", TWLinuxBase::Home },
    { "Homebrew", "Homebrew/Logs", TWLinuxBase::Cache },
    { "Google Cloud", "gcloud/logs", TWLinuxBase::Config },
    { "Azure", ".azure/logs", TWLinuxBase::Home },
    { "Azure, commands", ".azure/commands", TWLinuxBase::Home },

    // Containers and virtual machines
    { "Docker Desktop", ".docker/desktop/log", TWLinuxBase::Home },
    { "minikube", ".minikube/logs", TWLinuxBase::Home },
    { "libvirt", "libvirt/qemu/log", TWLinuxBase::Cache },
    { "Virtual Machine Manager", "virt-manager/*.log", TWLinuxBase::Cache, TWLinuxLogKind::File },
    { "VirtualBox", "VirtualBox/*.log*", TWLinuxBase::Config, TWLinuxLogKind::File },
    { "VirtualBox", "VirtualBox VMs/*/Logs", TWLinuxBase::Home },

    // Office, notes and files
    { "Obsidian", "obsidian/obsidian.log", TWLinuxBase::Config, TWLinuxLogKind::File },
    { "Joplin", "joplin-desktop/log.txt", TWLinuxBase::Config, TWLinuxLogKind::File },
    { "Nextcloud", "Nextcloud/logs", TWLinuxBase::Config },
    { "1Password", "1Password/logs", TWLinuxBase::Config },
    { "Bitwarden", "Bitwarden/app.log", TWLinuxBase::Config, TWLinuxLogKind::File },

    // Pictures, sound and video
    { "OBS Studio", "obs-studio/logs", TWLinuxBase::Config },
    { "OBS Studio, crash reports", "obs-studio/crashes", TWLinuxBase::Config },
    { "DaVinci Resolve", "DaVinciResolve/logs", TWLinuxBase::Data },
    { "Shotwell", "shotwell/shotwell.log", TWLinuxBase::Cache, TWLinuxLogKind::File },
    { "Kodi", ".kodi/temp/kodi*.log", TWLinuxBase::Home, TWLinuxLogKind::File },
    { "Kodi", "temp/kodi*.log", TWLinuxBase::Data, TWLinuxLogKind::File },

    // Working from afar
    { "Zoom", ".zoom/logs", TWLinuxBase::Home },
    { "TeamViewer", "teamviewer15/logfiles", TWLinuxBase::Data },
    { "RustDesk", "logs/RustDesk", TWLinuxBase::Data },
    { "AnyDesk", ".anydesk/anydesk.trace", TWLinuxBase::Home, TWLinuxLogKind::File },

    // Games
    { "Steam", "Steam/logs", TWLinuxBase::Data },
    { "Steam", ".local/share/Steam/logs", TWLinuxBase::Home },
    { "Heroic", "Heroic/logs", TWLinuxBase::State },
    { "Lutris", "lutris/lutris.log*", TWLinuxBase::Cache, TWLinuxLogKind::File },
    { "Minecraft", ".minecraft/logs", TWLinuxBase::Home },
    { "Minecraft, crash reports", ".minecraft/crash-reports", TWLinuxBase::Home },
    { "Prism Launcher", "PrismLauncher/logs", TWLinuxBase::Data },
    { "Unity", "unity3d/Editor*.log", TWLinuxBase::Config, TWLinuxLogKind::File },
    { "Unity Hub", "UnityHub/logs", TWLinuxBase::Config },
    { "Godot", "godot/app_userdata/*/logs", TWLinuxBase::Data },
};
