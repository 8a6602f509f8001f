// Gives a new file the owner, rights and user attributes of the file that it replaces.
#pragma once

#include "Descriptor.h"

#include <sys/stat.h>

namespace gif89 {

/// A file that is to be replaced.
struct OldFile {
    struct stat status = {};
    Descriptor file{}; ///< open for reading, or not when it may not be read
};

/// Gives the new file what the old one has: the user's extended attributes, owner and group, and
/// the rights, access control list included, each as far as the system allows. The bits that run
/// a program as its file's owner are not copied. When something cannot be kept, nobody gets a right
/// on the new file that they did not have on the old one.
///
/// @param newFile descriptor of a file of this process's user that nobody else has a right to yet
void HandOnRights(const OldFile& old, int newFile);

} // namespace gif89
