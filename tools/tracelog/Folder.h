// Which files are rings, and which of them may go.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tracelog {

/// The rings that the user names: files as they are, those of position files for position files,
/// and in a folder the regular files with names of rings, in the order of their names. Links, pipes
/// and devices in a folder are passed over. Every ring comes once, whatever paths lead to it.
/// Throws InputError for what is no regular file and no folder, or cannot be read.
std::vector<std::filesystem::path> findRings(const std::vector<std::filesystem::path>& sources);

/// The position files without a ring in the folders among the sources.
std::vector<std::filesystem::path> findLonePositions(
    const std::vector<std::filesystem::path>& sources);

/// What stands before the lines of a ring: the first 8 characters of the UUID, else the file's
/// name.
std::string ringLabel(const std::filesystem::path& ring);

/// Removes a ring and its position file when the process that wrote them ended `days` days ago or
/// before. The end is the newest time of the files and their lines that is not to come; when all
/// are to come, the ring stays. Returns whether the ring was removed. Throws InputError for a file
/// that has not the name of a ring, or cannot be read or removed.
bool prune(const std::filesystem::path& ring, int days);

/// Removes a position file that was last changed `days` days ago or before. Returns whether the
/// file was removed. Throws InputError for one that cannot be removed.
bool pruneLonePosition(const std::filesystem::path& position, int days);

}  // namespace tracelog
