#include "formats/TWKeyValueDatabase.h"
#include "formats_property.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

std::string contents(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return { std::istreambuf_iterator<char>(file), {} };
}

std::string newFolder()
{
    std::string folder = std::filesystem::temp_directory_path().string() + "/tidewell-fuzz-XXXXXX";
    return mkdtemp(folder.data()) ? folder : std::string();
}

}

// The first line holds the keys, the rest is the database.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    using TWFormatsProperty::require;
    static const std::string path = newFolder() + "/state";
    std::string_view input(reinterpret_cast<const char*>(bytes), size);
    const TWFormatsProperty::Keys keys = TWFormatsProperty::takeKeys(input);
    std::ofstream(path, std::ios::binary) << input;
    const TWFoundEntries found = TWKeyValueDatabase::find(path, keys);
    require(contents(path) == input, "find() changes nothing");
    const TWFoundEntries cut = TWKeyValueDatabase::cut(path, keys, [] { return true; });
    if (cut.counts.empty() || std::accumulate(cut.counts.begin(), cut.counts.end(), std::size_t(0)) == 0)
        require(contents(path) == input, "without rows the file stays as it is");
    else if (cut.problem.empty())
        require(
            TWKeyValueDatabase::find(path, keys).counts == std::vector<std::size_t>(keys.size()), "the rows are gone");
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(path).parent_path()))
        std::filesystem::remove(entry.path());
    return 0;
}
