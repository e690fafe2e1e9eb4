#pragma once

#include "platform/TWHost.h"
#include "platform/linux/TWLinuxFileSystem.h"
#include "platform/linux/TWLinuxFolderWatcher.h"
#include "platform/linux/TWLinuxLogSources.h"
#include "platform/linux/TWLinuxOpenFiles.h"
#include "platform/linux/TWLinuxPlaces.h"
#include "platform/linux/TWLinuxPreferenceFiles.h"
#include "platform/posix/TWPosixOwnFiles.h"

class TWLinuxHost final : public TWHost {
public:
    void prepareProcess() const override;
    std::string problemOfPlaces() const override;
    TWPlaces places() const override { return places_; }
    TWPlaces sandboxPlaces(const std::string& root) const override;
    const TWFileSystem& fileSystem() const override { return fileSystem_; }
    const TWOwnFiles& ownFiles() const override { return ownFiles_; }
    const TWPreferenceFiles& preferenceFiles() const override { return preferenceFiles_; }
    const TWFolderWatcher& folderWatcher() const override { return folderWatcher_; }
    const TWLogSources& logSources() const override { return logSources_; }
    const TWOpenFiles& openFiles() const override { return openFiles_; }
    std::unique_ptr<TWProcessLauncher> makeLauncher(TWRunLoop&) const override;
    std::unique_ptr<TWMountTable> makeMountTable() const override;
    std::unique_ptr<TWLocks> makeLocks() const override;
    std::unique_ptr<TWApplications> makeApplications(const TWPlaces&) const override;
    std::unique_ptr<TWVolumes> makeVolumes(const TWPlaces&) const override;
    std::unique_ptr<TWWorkspace> makeWorkspace(const TWPlaces&) const override;
    std::unique_ptr<TWHandover> makeHandover(const TWPlaces&, const std::string& dataFolder) const override;
    void holdEndRequests() const override;
    std::unique_ptr<TWRunLoopHandle> whenToldToEnd(TWRunLoop&, std::function<void()>) const override;
    std::optional<std::string> makeTemporaryFolder(int& error) const override;
    bool hasDisplay() const override;
    int becomeProgram(const std::string& path, char** arguments) const override;

private:
    const TWLinuxFileSystem fileSystem_{};
    const TWPosixOwnFiles ownFiles_{};
    const TWLinuxPreferenceFiles preferenceFiles_{};
    const TWLinuxFolderWatcher folderWatcher_{};
    const TWLinuxLogSources logSources_{};
    const TWLinuxOpenFiles openFiles_{};
    const TWPlaces places_ = TWLinuxPlaces();
};
