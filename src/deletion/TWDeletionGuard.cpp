#include "deletion/TWDeletionGuard.h"

TWDeletionGuard::TWDeletionGuard(
    const TWPlaces& places, const TWFileSystem& fileSystem, TWMountTable& mountTable, std::string dataFolder)
    : places_(places)
    , fileSystem_(fileSystem)
    , mountTable_(mountTable)
    , dataFolder_(std::move(dataFolder))
{
}

std::shared_ptr<const TWDeletionRules> TWDeletionGuard::rules()
{
    if (beforeRules_)
        beforeRules_();
    const auto mountPoints = mountTable_.mountPoints();
    if (!rules_ || mountPoints != mountPoints_) {
        mountPoints_ = mountPoints;
        rules_ = std::make_shared<const TWDeletionRules>(places_, fileSystem_, dataFolder_, mountPoints, keepList_);
    }
    return rules_;
}

void TWDeletionGuard::setKeepList(TWKeepList keepList)
{
    keepList_ = std::move(keepList);
    renew();
}
