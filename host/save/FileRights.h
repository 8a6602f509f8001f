// What a file hands on to the one that replaces it: owner, rights, and the user's own attributes.
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
/// a program as its file's owner are not handed on. Where something cannot be kept, nobody gets a
/// right that he did not have.
///
/// @param newFile descriptor of a file of this process's user that nobody else has a right to yet
void HandOnRights(const OldFile& old, int newFile);

} // namespace gif89
