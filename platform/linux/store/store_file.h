// The store's file: where it lies and how it comes into being.
#ifndef CORVANE_PLATFORM_LINUX_STORE_STORE_FILE_H_
#define CORVANE_PLATFORM_LINUX_STORE_STORE_FILE_H_

#include <functional>
#include <string>

#include "corvane/linux/base.h"

namespace Corvane::Store {

// $CORVANE_STORE, else corvane/store.db below $XDG_STATE_HOME (if that is absolute) or below
// .local/state of $HOME or of the user's entry in the password database. An empty variable counts
// as absent. ERROR_REGISTRY_IO_FAILED when there is none of them.
LSTATUS StorePath(std::string* path);

// Turns `path` into one without symbolic links in its folders, and looks at the file without
// following or opening it. ERROR_FILE_NOT_FOUND; ERROR_NOT_REGISTRY_FILE for a symbolic link, a
// folder, a device.
LSTATUS FindStoreFile(std::string* path);

// Makes the file and the folders on its way, for the user alone. `fill` gets the name of an empty
// file beside it, which takes its place in one step: nobody ever sees half a store. When another
// process was faster, its file stays.
LSTATUS CreateStoreFile(const std::string& path,
                        const std::function<LSTATUS(const std::string&)>& fill);

}  // namespace Corvane::Store

#endif  // CORVANE_PLATFORM_LINUX_STORE_STORE_FILE_H_
