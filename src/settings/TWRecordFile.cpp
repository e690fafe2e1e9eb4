#include "settings/TWRecordFile.h"

#include "support/TWText.h"

namespace {

constexpr auto NotARecord = "entry %@ is not %@";

}

TWRecordFile::TWRecordFile(const TWDataFolder& dataFolder, std::string name)
    : dataFolder_(dataFolder)
    , name_(std::move(name))
{
}

std::string TWRecordFile::notARecord(const std::string& path, std::size_t number, std::string_view kind)
{
    return TWDataFolder::unreadable(path, TWText::fill(NotARecord, { std::to_string(number), kind }));
}

std::string TWRecordFile::write(TWValue::Array records, TWOldFile oldFile)
{
    auto written = dataFolder_.write(name_, std::move(records), oldFile);
    if (written.problem.empty() && !written.keptAs.empty())
        keptAs_ = std::move(written.keptAs);
    return written.problem;
}
