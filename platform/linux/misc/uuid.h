// UUIDs and their text.
#ifndef CORVANE_PLATFORM_LINUX_MISC_UUID_H_
#define CORVANE_PLATFORM_LINUX_MISC_UUID_H_

#include "corvane/linux/base.h"

typedef LONG RPC_STATUS;
typedef unsigned char* RPC_CSTR;

#define RPC_S_OK 0
#define RPC_S_OUT_OF_MEMORY 14
#define RPC_S_UUID_NO_ADDRESS 1739
#define RPC_S_UUID_LOCAL_ONLY 1824  // Windows alone answers so

extern "C" {

// A random (version 4) UUID. RPC_S_UUID_NO_ADDRESS when the kernel has no random bytes to give.
RPC_STATUS WINAPI UuidCreate(UUID* uuid);

// 36 lower-case characters and a NUL, which the caller frees with RpcStringFreeA; a NULL `uuid` is
// the nil UUID. RPC_S_OUT_OF_MEMORY.
RPC_STATUS WINAPI UuidToStringA(const UUID* uuid, RPC_CSTR* text);

// Frees *text, which may be NULL, and sets it to NULL. Always RPC_S_OK.
RPC_STATUS WINAPI RpcStringFreeA(RPC_CSTR* text);

}  // extern "C"

#endif  // CORVANE_PLATFORM_LINUX_MISC_UUID_H_
