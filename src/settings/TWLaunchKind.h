#pragma once

// Differs on purpose: a command is no launch. It never merges new default rules, stamps no version and never greets.
enum class TWLaunchKind { Window, Command };
