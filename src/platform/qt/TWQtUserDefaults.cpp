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
    , settings_(text(file_), QSettings::IniFormat)
{
    if (settings_.status() != QSettings::NoError)
        problem_ = TWText::fill(Unreadable, {file_, file_});
}

std::optional<TWValue> TWQtUserDefaults::value(const std::string& key) const
{
    const auto stored = settings_.value(text(key));
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
    if (keepDamaged())
        settings_.setValue(text(key), variant(value));
}

void TWQtUserDefaults::removeValue(const std::string& key)
{
    if (keepDamaged())
        settings_.remove(text(key));
}

std::string TWQtUserDefaults::synchronize()
{
    if (!problem_.empty())
        return "";
    settings_.sync();
    return settings_.status() == QSettings::NoError ? "" : TWText::fill(Unwritable, {file_});
}

// False when the damaged file could not be kept: then nothing is changed at all.
bool TWQtUserDefaults::keepDamaged()
{
    if (problem_.empty())
        return true;
    const int error = fileSystem_.copyFile(file_, file_ + ".damaged");
    if (error != 0 && error != EEXIST)
        return false;
    problem_.clear();
    return true;
}
