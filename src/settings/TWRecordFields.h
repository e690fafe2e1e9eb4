#pragma once

#include "plist/TWValue.h"

// Takes one field of a record. A missing entry leaves the variable as it is. Returns false if the entry has another
// type. Any thread.
bool TWTakeField(TWDictionary& record, const char* key, std::string& text);
bool TWTakeField(const TWDictionary& record, const char* key, std::int64_t& number);
