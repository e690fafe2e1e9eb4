#pragma once

// Lines that both the plan and the job of the Recent Items cleaner say.
namespace TWRecentItemsTexts {

inline constexpr auto DoesNotExist = "File %@ does not exist, skipping deletion.";
inline constexpr auto CouldNotOpen = "Could not open %@";
inline constexpr auto CannotOpen = "\"%@\" cannot be opened: %@.";

}
