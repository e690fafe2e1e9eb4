#pragma once

#include "TWUDisks.h"
#include "TWUnmountWay.h"

// The desktops' service unmounts, and then locks an encrypted container, ends a disk image and ejects a drive.
class TWUDisksWay final : public TWUnmountWay {
public:
    explicit TWUDisksWay(const TWDeadline& deadline)
        : deadline_(deadline)
    {
    }

    const char* name() const override { return "UDisks2"; }
    bool applies(const TWLinuxMount&) override;
    std::string unmount(const TWJudgedMount&, TWUnmountKind, TWDeadline::Duration limit) override;
    void release(const TWDeadline&) override;

private:
    std::string objectOf(const TWLinuxMount&) const;
    std::string lock(const TWDeadline&);
    void endDiskImage(const std::string& object, const TWDeadline&);
    void eject(const std::string& drive, const TWDeadline&);
    void call(const std::string& object, const char* interface, const char* method, const TWDeadline&);

    const TWDeadline& deadline_;
    TWUDisks service_;
    TWUDisksObjects objects_;
    std::string volume_; // the object that is unmounted
    std::string refusal_; // what it answered if the user may not unmount
};
