#pragma once

#include "fakes/TWFakeMachine.h"

#include <csignal>
#include <optional>

// What every launcher promises. Body makes one for the machine: it deletes with /bin/rm below the machine's root, lets
// /bin/sleep last, and cannot launch /missing.
template <typename Body>
class TWProcessLauncherContract : public testing::Test {
protected:
    void start(const std::string& tool, const std::string& argument)
    {
        int error = 0;
        const auto folder = machine_.fileSystem.holdFolder(machine_.root.path(), error);
        child_ = body_.launcher().launch(tool, { argument }, *folder, [this](const TWTermination& termination) {
            EXPECT_FALSE(ended_) << "told twice";
            ended_ = termination;
        });
        EXPECT_FALSE(ended_) << "told within the launch";
    }
    // Until nothing more can come.
    void turnForAWhile()
    {
        machine_.runLoop.runUntil([turns = 0]() mutable { return ++turns > 50; });
    }
    void expectEnd(TWTermination::Kind kind, int code)
    {
        machine_.runLoop.runUntil([this] { return ended_.has_value(); });
        turnForAWhile();
        ASSERT_TRUE(ended_);
        EXPECT_EQ(ended_->kind, kind);
        EXPECT_EQ(ended_->code, code);
        ended_.reset();
    }

    TWFakeMachine machine_;
    Body body_{ machine_ };
    std::unique_ptr<TWChildProcess> child_;
    std::optional<TWTermination> ended_;
};

TYPED_TEST_SUITE_P(TWProcessLauncherContract);

TYPED_TEST_P(TWProcessLauncherContract, EveryEndIsToldOnceOnALaterTurn)
{
    using Kind = TWTermination::Kind;
    this->machine_.root.write("file", "");
    this->start("/bin/rm", "./file");
    this->expectEnd(Kind::Exited, 0);
    EXPECT_FALSE(this->machine_.root.exists("file")) << "the tool works in the folder that it was given";
    this->start("/missing", "");
    this->expectEnd(Kind::NotLaunched, ENOENT);
    this->start("/bin/sleep", "100");
    this->child_->terminate();
    this->child_->terminate();
    this->expectEnd(Kind::Signalled, SIGTERM);
    this->child_->kill(); // has ended already
    this->start("/bin/sleep", "100");
    this->child_->kill();
    this->expectEnd(Kind::Signalled, SIGKILL);
}

TYPED_TEST_P(TWProcessLauncherContract, ADestroyedChildIsSilent)
{
    for (const auto* tool : { "/bin/sleep", "/bin/true", "/missing" }) {
        this->start(tool, "100");
        this->child_.reset();
        this->turnForAWhile();
        EXPECT_FALSE(this->ended_) << tool;
    }
}

REGISTER_TYPED_TEST_SUITE_P(TWProcessLauncherContract, EveryEndIsToldOnceOnALaterTurn, ADestroyedChildIsSilent);
