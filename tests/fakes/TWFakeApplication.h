#pragma once

#include "app/TWTidewellAppDelegate.h"
#include "fakes/TWFakeMachine.h"

#include <set>

// Records every call as a line; nothing is checked at first.
struct TWFakeApplicationView final : TWRunView, TWApplicationWindows {
    std::set<TWWindow> keyWindows;
    std::vector<std::string> lines;
    bool measures = false;
    TWOutcome freed; // by the latest run

    bool showsProgress() const override { return measures; }
    void showOutcome(const TWOutcome& given) override { freed = given; }
    void showLight(int position, TWLight light) override
    {
        const char* names[] = { "off", "yellow", "green", "red", "stopped" };
        lines.push_back(names[static_cast<int>(light)] + (" " + std::to_string(position)));
    }
    void startSpinning(int position) override { lines.push_back("spin " + std::to_string(position)); }
    void stopSpinning(int position) override { lines.push_back("rest " + std::to_string(position)); }
    void setCleanEnabled(bool enabled) override { lines.emplace_back(enabled ? "enable" : "disable"); }
    void bringToFront(TWWindow window) override
    {
        static constexpr const char* Names[] = { "main", "results", "preferences", "quick cleanup" };
        lines.push_back(std::string("front ") + Names[static_cast<int>(window)]);
    }
    bool isKeyWindow(TWWindow window) const override { return keyWindows.count(window) != 0; }
    void activate() override { lines.emplace_back("activate"); }
    void requestUserAttention() override { lines.emplace_back("attention"); }
    void terminate() override { lines.emplace_back("terminate"); }
    void cleaningEnded(TWRunOutcome outcome) override
    {
        static constexpr const char* Names[] = { "nothing run", "succeeded", "failed" };
        lines.push_back(std::string("ended: ") + Names[static_cast<int>(outcome)]);
    }
};

// A machine on which Tidewell is installed: empty registered defaults, a greeting, one default rule.
struct TWFakeApplication : TWFakeMachine {
    TWFakeApplicationView view;

    TWFakeApplication()
    {
        root.write("resources/org.tidewell.Tidewell.plist", "<plist version=\"1.0\"><dict/></plist>");
        root.write("resources/Welcome.txt", "Welcome.");
        root.write("resources/KeepList.plist", "<plist><array/></plist>");
        root.write("resources/FilesRules.plist",
            "<plist><array><dict><key>Active</key><true/><key>FilePath</key><string>~/default</string></dict></array>"
            "</plist>");
    }
    std::unique_ptr<TWTidewellAppDelegate> start(TWLaunchKind kind = TWLaunchKind::Window)
    {
        auto delegate = std::make_unique<TWTidewellAppDelegate>(platform, kind);
        delegate->setViews(&view, &view);
        return delegate;
    }
};
