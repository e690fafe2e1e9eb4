#pragma once

#include "platform/TWOwnFiles.h"
#include "platform/TWPlaces.h"

#include <string>

// Fills a sandbox with sample traces: a Trash with records, thumbnails, documents of which some names hold a word of a
// sample dictionary, and the rules and settings that clean them. "" or one line that names the file and the remedy.
std::string TWMakeDemoWorld(
    const TWOwnFiles&, const TWPlaces&, const std::string& dataFolder, const std::string& defaultsFile);
