#include "cleaners/TWVolumeFacts.h"

namespace {

constexpr std::size_t FactsPerTurn = 100;

}

std::unique_ptr<TWVolumeLook> TWLookAtVolumes(TWRunLoop& runLoop, const TWVolumes& volumes,
    const std::vector<TWVolume>& which, std::function<void(const TWVolumeFacts&)> taken, std::function<void()> ended)
{
    std::vector<TWVolumeFacts> all;
    all.reserve(which.size());
    for (const auto& volume : which)
        all.push_back({ volume, {}, std::nullopt });
    auto work = [&volumes, all = std::move(all)](TWVolumeLook::Sink& sink) mutable {
        for (auto& facts : all) {
            facts.use = volumes.use(facts.volume, sink.cancellation());
            sink.put(facts);
        }
        for (auto& facts : all) {
            if (sink.cancellation().cancelled())
                return;
            facts.freeBytes = volumes.freeBytes(facts.volume);
            sink.put(facts);
        }
    };
    return std::make_unique<TWVolumeLook>(runLoop, FactsPerTurn, std::move(work), std::move(taken), std::move(ended));
}
