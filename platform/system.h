// The internal platform door: what the library calls beyond the types of its exported interface
// (time, UUIDs, text conversion, sockets, URLs, threads). On Windows the system's headers, on Linux
// the layer's, one header an API family.
#ifndef CORVANE_PLATFORM_SYSTEM_H_
#define CORVANE_PLATFORM_SYSTEM_H_

#include "corvane/platform.h"

#ifdef _WIN32
#include <process.h>
#include <rpc.h>
#include <wininet.h>
#include <ws2tcpip.h>
#else
#include "platform/linux/misc/text.h"
#include "platform/linux/misc/time.h"
#include "platform/linux/misc/uuid.h"
#include "platform/linux/net/wininet.h"
#include "platform/linux/net/winsock.h"
#include "platform/linux/threads/threads.h"
#endif

#endif  // CORVANE_PLATFORM_SYSTEM_H_
