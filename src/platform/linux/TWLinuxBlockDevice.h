#pragma once

#include <cstdint>
#include <string>
#include <vector>

// What the system tells about block devices, which it knows by their numbers. Any thread.
namespace TWLinuxBlockDevice {

// The number of the device that a file system is on; 0 if it is on none. Both as the mount table has them.
std::uint64_t number(std::uint64_t fileSystemNumber, const std::string& source);

// The number that the kernel has given to the disk when it appeared, and gives to no other one; 0 if there is none.
std::uint64_t disk(std::uint64_t number);

// Paths of the devices that are made of this one, such as "/dev/dm-0".
std::vector<std::string> devicesOn(std::uint64_t number);

// A file that a block device (a "loop" device) makes to a disk.
struct DiskImage {
    std::string device; // "/dev/loop0"
    std::string path; // the file; below "/" of a volume that has been detached
};
std::vector<DiskImage> diskImages();
bool isDiskImage(std::uint64_t number);

// Whether anything uses the device: a file system that is mounted anywhere, also in a container, or only detached; or
// another device, or swap. Often nobody but root is told that it is free.
enum class Use { Free, InUse, Unknown };
Use use(std::uint64_t number);

// True if the file system on the device, as long as it is mounted or only detached, is in a list that everybody may
// read. Once it has left the list, the device is free.
bool isListed(std::uint64_t number);

}
