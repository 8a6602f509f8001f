// The files opened last, kept from one run to the next.
#pragma once

#include <string>
#include <vector>

namespace gif89 {

constexpr std::size_t kMostRecentFiles = 10;

/// Paths, the latest first. Names may have any bytes.
std::vector<std::string> RecentFiles();
/// Puts a path first; taken relative to the working folder.
void RememberFile(const std::string& path);
void ForgetFiles();

} // namespace gif89
