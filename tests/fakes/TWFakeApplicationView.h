#pragma once

#include "app/TWApplicationView.h"

#include <array>
#include <set>
#include <string>
#include <vector>

// Records every call as a line; nothing is checked at first.
struct TWFakeApplicationView final : TWApplicationView {
    std::array<bool, 8> checked {};
    std::set<TWWindow> keyWindows;
    std::vector<std::string> lines;

    bool isChecked(int position) const override { return checked[static_cast<std::size_t>(position)]; }
    void showLight(int position, TWLight light) override
    {
        static constexpr const char* Names[] = {"off", "yellow", "green", "red"};
        lines.push_back(Names[static_cast<int>(light)] + (" " + std::to_string(position)));
    }
    void startSpinning(int position) override { lines.push_back("spin " + std::to_string(position)); }
    void stopSpinning(int position) override { lines.push_back("rest " + std::to_string(position)); }
    void setCleanEnabled(bool enabled) override { lines.emplace_back(enabled ? "enable" : "disable"); }
    void bringToFront(TWWindow window) override
    {
        static constexpr const char* Names[] = {"main", "results", "preferences", "quick cleanup"};
        lines.push_back(std::string("front ") + Names[static_cast<int>(window)]);
    }
    bool isKeyWindow(TWWindow window) const override { return keyWindows.count(window) != 0; }
    void activate() override { lines.emplace_back("activate"); }
    void requestUserAttention() override { lines.emplace_back("attention"); }
    void terminate() override { lines.emplace_back("terminate"); }
    void cleaningEnded(TWRunOutcome outcome) override
    {
        static constexpr const char* Names[] = {"nothing run", "succeeded", "failed"};
        lines.push_back(std::string("ended: ") + Names[static_cast<int>(outcome)]);
    }
};
