/*
 * What every public header shares: the fixed-width types, the export mark and the IfIndex.
 *
 * Conventions of all headers in this folder:
 *   - Each compiles by itself as C11 and as C++20.
 *   - A declaration marked RUK_EXPORT is part of the interface: its name, the order of its
 *     arguments and their widths do not change within a major version.
 *   - Multi-byte integers are in the host's byte order unless a comment says otherwise.
 *   - A pointer must not be null unless its comment allows it.
 *   - "Left untouched" means that not one byte is written.
 */
#ifndef RUK_TYPES_H
#define RUK_TYPES_H

/* First, so that nothing else is said about a target of another kind. */
#if defined __SIZEOF_POINTER__ && __SIZEOF_POINTER__ != 8
#error "ruklog's records hold 64-bit addresses: build for a 64-bit target, without -m32 or -mx32"
#endif

#include <assert.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Marks what the tool and the shared library export; everything else is hidden. */
#define RUK_EXPORT __attribute__((visibility("default")))

/* Lets the compiler check a format against its arguments, counted from 1. */
#define RUK_PRINTF_LIKE(format_at, arguments_at)                                                   \
    __attribute__((format(printf, format_at, arguments_at)))

/* A 32-bit interface index; ruk/if_index.h tells its layout. */
typedef uint32_t IfIndex;

#ifdef __cplusplus
}
#endif

#endif /* RUK_TYPES_H */
