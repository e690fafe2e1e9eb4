#pragma once

// The user's folders, or those that a Flatpak has in their place.
enum class TWLinuxBase { Home, Config, Data, State, Cache };

enum class TWLinuxLogKind { Folder, File };

// A place where a program writes logs.
struct TWLinuxLogPlace {
    const char* program; // for the user
    TWLinuxBase base;
    const char* path; // below the base; "*" stands for any characters, once, in one component
    TWLinuxLogKind kind = TWLinuxLogKind::Folder;
};

// Only what holds nothing but logs or crash reports, because ticking a folder deletes everything in it. So the folder
// above is named where logs lie beside other files. Programs for chats are left out: many keep the chats in a folder
// called "logs". Databases call their journals logs, too.
inline constexpr TWLinuxLogPlace TWLinuxLogPlaces[] = {
    // The session
    { "Services and programs", TWLinuxBase::State, "log" },
    { "X server", TWLinuxBase::Data, "xorg" },
    { "X session", TWLinuxBase::Home, ".xsession-errors*", TWLinuxLogKind::File },
    { "SDDM session", TWLinuxBase::Data, "sddm/*-session.log", TWLinuxLogKind::File },
    { "GDM session", TWLinuxBase::Cache, "gdm/session.log*", TWLinuxLogKind::File },
    { "LXDE session", TWLinuxBase::Cache, "lxsession/*/run.log", TWLinuxLogKind::File },
    { "Upstart session", TWLinuxBase::Cache, "upstart" },

    // Browsers and mail
    { "Firefox, sent crash reports", TWLinuxBase::Home, ".mozilla/firefox/Crash Reports/submitted" },
    { "Firefox, unsent crash reports", TWLinuxBase::Home, ".mozilla/firefox/Crash Reports/pending" },
    { "Firefox, sent crash reports", TWLinuxBase::Config, "mozilla/firefox/Crash Reports/submitted" },
    { "Firefox, unsent crash reports", TWLinuxBase::Config, "mozilla/firefox/Crash Reports/pending" },
    { "Firefox, sent crash reports", TWLinuxBase::Home,
        "snap/firefox/common/.mozilla/firefox/Crash Reports/submitted" },
    { "Firefox, unsent crash reports", TWLinuxBase::Home,
        "snap/firefox/common/.mozilla/firefox/Crash Reports/pending" },
    { "Thunderbird, sent crash reports", TWLinuxBase::Home, ".thunderbird/Crash Reports/submitted" },
    { "Thunderbird, unsent crash reports", TWLinuxBase::Home, ".thunderbird/Crash Reports/pending" },
    { "Chrome, sent crash reports", TWLinuxBase::Config, "google-chrome/Crash Reports/completed" },
    { "Chrome, unsent crash reports", TWLinuxBase::Config, "google-chrome/Crash Reports/pending" },
    { "Chromium, sent crash reports", TWLinuxBase::Config, "chromium/Crash Reports/completed" },
    { "Chromium, unsent crash reports", TWLinuxBase::Config, "chromium/Crash Reports/pending" },
    { "Brave, sent crash reports", TWLinuxBase::Config, "BraveSoftware/Brave-Browser/Crash Reports/completed" },
    { "Brave, unsent crash reports", TWLinuxBase::Config, "BraveSoftware/Brave-Browser/Crash Reports/pending" },
    { "Edge, sent crash reports", TWLinuxBase::Config, "microsoft-edge/Crash Reports/completed" },
    { "Edge, unsent crash reports", TWLinuxBase::Config, "microsoft-edge/Crash Reports/pending" },
    { "Vivaldi, sent crash reports", TWLinuxBase::Config, "vivaldi/Crash Reports/completed" },
    { "Vivaldi, unsent crash reports", TWLinuxBase::Config, "vivaldi/Crash Reports/pending" },

    // Editors and tools for programmers
    { "Visual Studio Code", TWLinuxBase::Config, "Code/logs" },
    { "Visual Studio Code Insiders", TWLinuxBase::Config, "Code - Insiders/logs" },
    { "Code - OSS", TWLinuxBase::Config, "Code - OSS/logs" },
    { "VSCodium", TWLinuxBase::Config, "VSCodium/logs" },
    { "Cursor", TWLinuxBase::Config, "Cursor/logs" },
    { "Zed", TWLinuxBase::Data, "zed/logs" },
    { "Sublime Text", TWLinuxBase::Config, "sublime-text/Log" },
    { "Neovim", TWLinuxBase::State, "nvim/log", TWLinuxLogKind::File },
    { "Neovim", TWLinuxBase::State, "nvim/*.log", TWLinuxLogKind::File },
    { "Helix", TWLinuxBase::Cache, "helix/helix.log", TWLinuxLogKind::File },
    { "JetBrains", TWLinuxBase::Cache, "JetBrains/*/log" },
    { "JetBrains Toolbox", TWLinuxBase::Data, "JetBrains/Toolbox/logs" },
    { "Android Studio", TWLinuxBase::Cache, "Google/AndroidStudio*/log" },
    { "NetBeans", TWLinuxBase::Home, ".netbeans/*/var/log" },
    { "DBeaver", TWLinuxBase::Data, "DBeaverData/workspace6/.metadata/dbeaver-debug*.log", TWLinuxLogKind::File },
    { "MySQL Workbench", TWLinuxBase::Home, ".mysql/workbench/log" },
    { "pgAdmin", TWLinuxBase::Home, ".pgadmin/pgadmin4.log*", TWLinuxLogKind::File },
    { "GitHub Desktop", TWLinuxBase::Config, "GitHub Desktop/logs" },
    { "GitKraken", TWLinuxBase::Home, ".gitkraken/logs" },
    { "Postman", TWLinuxBase::Config, "Postman/logs" },
    { "Insomnia", TWLinuxBase::Config, "Insomnia/logs" },
    { "Anaconda Navigator", TWLinuxBase::Home, ".anaconda/navigator/logs" },
    { "npm", TWLinuxBase::Home, ".npm/_logs" },
    { "Homebrew", TWLinuxBase::Cache, "Homebrew/Logs" },
    { "Google Cloud", TWLinuxBase::Config, "gcloud/logs" },
    { "Azure", TWLinuxBase::Home, ".azure/logs" },
    { "Azure, commands", TWLinuxBase::Home, ".azure/commands" },

    // Containers and virtual machines
    { "Docker Desktop", TWLinuxBase::Home, ".docker/desktop/log" },
    { "minikube", TWLinuxBase::Home, ".minikube/logs" },
    { "libvirt", TWLinuxBase::Cache, "libvirt/qemu/log" },
    { "Virtual Machine Manager", TWLinuxBase::Cache, "virt-manager/*.log", TWLinuxLogKind::File },
    { "VirtualBox", TWLinuxBase::Config, "VirtualBox/*.log*", TWLinuxLogKind::File },
    { "VirtualBox", TWLinuxBase::Home, "VirtualBox VMs/*/Logs" },

    // Office, notes and files
    { "Obsidian", TWLinuxBase::Config, "obsidian/obsidian.log", TWLinuxLogKind::File },
    { "Joplin", TWLinuxBase::Config, "joplin-desktop/log.txt", TWLinuxLogKind::File },
    { "Nextcloud", TWLinuxBase::Config, "Nextcloud/logs" },
    { "1Password", TWLinuxBase::Config, "1Password/logs" },
    { "Bitwarden", TWLinuxBase::Config, "Bitwarden/app.log", TWLinuxLogKind::File },

    // Pictures, sound and video
    { "OBS Studio", TWLinuxBase::Config, "obs-studio/logs" },
    { "OBS Studio, crash reports", TWLinuxBase::Config, "obs-studio/crashes" },
    { "DaVinci Resolve", TWLinuxBase::Data, "DaVinciResolve/logs" },
    { "Shotwell", TWLinuxBase::Cache, "shotwell/shotwell.log", TWLinuxLogKind::File },
    { "Kodi", TWLinuxBase::Home, ".kodi/temp/kodi*.log", TWLinuxLogKind::File },
    { "Kodi", TWLinuxBase::Data, "temp/kodi*.log", TWLinuxLogKind::File },

    // Working from afar
    { "Zoom", TWLinuxBase::Home, ".zoom/logs" },
    { "TeamViewer", TWLinuxBase::Data, "teamviewer15/logfiles" },
    { "RustDesk", TWLinuxBase::Data, "logs/RustDesk" },
    { "AnyDesk", TWLinuxBase::Home, ".anydesk/anydesk.trace", TWLinuxLogKind::File },

    // Games
    { "Steam", TWLinuxBase::Data, "Steam/logs" },
    { "Steam", TWLinuxBase::Home, ".local/share/Steam/logs" },
    { "Heroic", TWLinuxBase::State, "Heroic/logs" },
    { "Lutris", TWLinuxBase::Cache, "lutris/lutris.log*", TWLinuxLogKind::File },
    { "Minecraft", TWLinuxBase::Home, ".minecraft/logs" },
    { "Minecraft, crash reports", TWLinuxBase::Home, ".minecraft/crash-reports" },
    { "Prism Launcher", TWLinuxBase::Data, "PrismLauncher/logs" },
    { "Unity", TWLinuxBase::Config, "unity3d/Editor*.log", TWLinuxLogKind::File },
    { "Unity Hub", TWLinuxBase::Config, "UnityHub/logs" },
    { "Godot", TWLinuxBase::Data, "godot/app_userdata/*/logs" },
};
