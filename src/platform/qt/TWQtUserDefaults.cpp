#include "platform/qt/TWQtUserDefaults.h"

#include "support/TWText.h"

#include <cerrno>

namespace {

constexpr auto Unreadable = "The settings file \"%@\" could not be read completely. It is left untouched until a setting is changed, and then "
                            "kept as \"%@.damaged\"; please repair it, or move it away to start anew.";
constexpr auto Unwritable = "The settings file \"%@\" could not be saved. Please make room on the disk or check the permissions.";

QString text(const std::string& bytes)
{
    return QString::fromStdString(bytes);
}

QVariant variant(const TWValue& value)
{
    if (const auto* boolean = value.boolean())
        return *boolean;
    if (const auto* integer = value.integer())
        return static_cast<qlonglong>(*integer);
    return value.string() ? text(*value.string()) : QVariant();
}

}

TWQtUserDefaults::TWQtUserDefaults(const TWFileSystem& fileSystem, std::string file)
    : fileSystem_(fileSystem)
    , file_(std::move(file))
    , settings_(std::in_place, text(file_), QSettings::IniFormat)
{
    settings_->allKeys(); // or a damaged section is noticed only when one of its keys is asked for
    if (settings_->status() != QSettings::NoError)
        problem_ = TWText::fill(Unreadable, {file_, file_});
}

std::optional<TWValue> TWQtUserDefaults::value(const std::string& key) const
{
    const auto stored = settings_->value(text(key));
    if (!stored.isValid())
        return std::nullopt;
    if (stored.typeId() == QMetaType::Bool)
        return stored.toBool();
    if (stored.typeId() == QMetaType::LongLong)
        return std::int64_t(stored.toLongLong());
    // The file's comma makes a list of what was one text.
    return TWValue(stored.toStringList().join(", ").toStdString());
}

void TWQtUserDefaults::setValue(const std::string& key, const TWValue& value)
{
    if (readyForChange())
        settings_->setValue(text(key), variant(value));
}

void TWQtUserDefaults::removeValue(const std::string& key)
{
    if (readyForChange())
        settings_->remove(text(key));
}

std::string TWQtUserDefaults::synchronize()
{
    if (!problem_.empty())
        return changeRefused_ ? TWText::fill(Unwritable, {file_}) : "";
    settings_->sync();
    return settings_->status() == QSettings::NoError ? "" : TWText::fill(Unwritable, {file_});
}

// False when the damaged file could not be kept: then nothing is changed at all.
bool TWQtUserDefaults::readyForChange()
{
    if (problem_.empty())
        return true;
    QVariantMap readable;
    for (const auto& key : settings_->allKeys())
        readable[key] = settings_->value(key);
    changeRefused_ = !keepDamaged() || fileSystem_.writeAtomically(file_, "") != 0;
    if (changeRefused_)
        return false;
    problem_.clear();
    // QSettings never forgets that its file was damaged: a new one goes on with what could be read.
    settings_.emplace(text(file_), QSettings::IniFormat);
    for (auto each = readable.cbegin(); each != readable.cend(); ++each)
        settings_->setValue(each.key(), each.value());
    return true;
}

bool TWQtUserDefaults::keepDamaged() const
{
    // An earlier damaged file stays as it was: the next one gets a number.
    int error = fileSystem_.copyFile(file_, file_ + ".damaged");
    for (int number = 2; error == EEXIST && number < 100; ++number)
        error = fileSystem_.copyFile(file_, file_ + ".damaged." + std::to_string(number));
    return error == 0;
}
