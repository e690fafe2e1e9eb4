#include "platform/linux/TWLinuxOpenFiles.h"

#include "builders/TWProgram.h"
#include "platform/TWRunLoop.h"
#include "platform/linux/TWLinuxFileSystem.h"

#include <gtest/gtest.h>

#include <csignal>
#include <thread>

TEST(TWLinuxOpenFilesTest, NamesTheProgramsThatHoldADeletedFile)
{
    const TWTemporaryFolder folder;
    const TWCancellation cancellation;
    const auto held = folder.path("held (deleted)\n");
    const auto linked = folder.path("linked");
    const TWProgram program(folder,
        { "/bin/sh", "-c", "echo x | tee \"$0\" > \"$1\"; exec sleep 60 3>>\"$0\" 4>>\"$1\" 5>>\"$0\"", held, linked });
    const auto found = [&] {
        std::vector<TWDeletedFile> ours;
        for (auto& file : TWLinuxOpenFiles().deletedFiles(cancellation)) {
            if (file.path.starts_with(folder.path()))
                ours.push_back(std::move(file));
        }
        return ours;
    };
    const auto holder = [&] {
        std::error_code error;
        return std::filesystem::read_symlink("/proc/" + std::to_string(program.process()) + "/fd/5", error);
    };
    for (int turn = 0; turn < 1000 && holder() != held; ++turn)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    const auto identity = TWLinuxFileSystem().look(held).facts.identity;
    std::filesystem::create_hard_link(linked, folder.path("other name"));
    EXPECT_TRUE(found().empty());
    std::filesystem::remove(held);
    std::filesystem::remove(linked);

    const auto files = found();
    ASSERT_EQ(files.size(), 1U);
    EXPECT_EQ(files[0].path, held);
    EXPECT_EQ(files[0].identity, identity);
    EXPECT_GT(files[0].bytes, 0U);
    EXPECT_EQ(files[0].programs, std::vector<std::string>{ "sleep" });

    kill(program.process(), SIGKILL);
    program.wait();
    EXPECT_TRUE(found().empty());
}
