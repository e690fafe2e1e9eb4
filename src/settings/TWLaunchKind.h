#pragma once

// Differs on purpose: running a command is not a launch. It never merges new default rules, stores no version and never
// greets.
enum class TWLaunchKind { Window, Command };
