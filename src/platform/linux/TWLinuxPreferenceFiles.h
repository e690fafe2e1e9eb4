#pragma once

#include "platform/TWPreferenceFiles.h"

class TWLinuxPreferenceFiles final : public TWPreferenceFiles {
public:
    Contents read(const TWHeldFolder&, const std::string& name, std::size_t limit) const override;
    Contents readBeginning(const TWHeldFolder&, const std::string& name, std::size_t length) const override;
    Replaced replace(
        const TWHeldFolder&, const std::string& name, const TWFileFacts& seen, std::string_view bytes) const override;
};
