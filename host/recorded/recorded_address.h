// A recorded device: a folder of the bodies that it serves, as an Address. It needs no network.
#ifndef CORVANE_HOST_RECORDED_RECORDED_ADDRESS_H_
#define CORVANE_HOST_RECORDED_RECORDED_ADDRESS_H_

#include <filesystem>

#include "corvane/transport.h"

namespace Corvane::Host {

// The body of the resource `/path/name` on port N is the file `N/path/name` of the folder, or else
// `N/path/name.xml`; GET and POST answer alike, with status 200, or 404 where there is no such
// file, and any other verb with 405. Nothing in a path is decoded, and a query is part of the name.
// A path never leaves the folder: empty segments, "." and "..", backslashes, colons and control
// characters are no file, nor is what Windows reads as another name or a device (`*?"<>|`, a dot or
// space at the end, "NUL"), so that a recording answers alike on both systems; nor what a link
// leads out to, nor anything but a regular file.
//
// A file above 64 MB fails the exchange. Credentials and time-outs are taken and mean nothing.
// GetAddress gives "recorded.invalid", the display name is the folder. GetLastFailure tells of the
// exchange that ended last on any thread; its text is the asking thread's until that asks again.
// CreateIPPHTTPRequest (address_base.h) and GetMIBConnection: E_NOTIMPL.
//
// One reference, the caller's; null when `folder` is no folder.
Address* CreateRecordedAddress(const std::filesystem::path& folder);

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_RECORDED_RECORDED_ADDRESS_H_
