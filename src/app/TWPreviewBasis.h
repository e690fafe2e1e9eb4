#pragma once

#include "app/TWTidewellAppDelegate.h"
#include "cleaners/TWApplicationsRecord.h"
#include "cleaners/TWFilesRule.h"
#include "cleaners/TWRecentItemsRule.h"
#include "cleaners/TWVolumesRecord.h"
#include "editors/TWKeepRecord.h"

// The switches, settings and lists that a preview is made from. Copied, so that a later change of them can be noticed.
struct TWPreviewBasis {
    TWRunChoice switchedOn{};
    std::vector<TWFilesRule> rules;
    std::vector<TWRecentItemsRule> recentItemsRules;
    std::vector<std::string> logs; // the checked ones
    std::vector<TWApplicationsRecord> applications;
    bool forcesQuit = false;
    std::int32_t timeout = 0;
    std::vector<TWVolumesRecord> volumes; // the checked ones
    std::vector<std::string> words;
    std::vector<TWKeepRecord> kept;
    bool deletesSecurely = false;
    std::int64_t secureMode = 0;

    static TWPreviewBasis now(TWTidewellAppDelegate&);

    friend bool operator==(const TWPreviewBasis&, const TWPreviewBasis&) = default;
};
