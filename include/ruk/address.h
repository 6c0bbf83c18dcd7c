/*
 * Text of MAC, IPv4 and IPv6 addresses and of interface UUIDs: parsers and formatters.
 *
 * Parsers take a terminated text and never read past its terminator.  They return 0, or -1 with
 * the output left untouched except where a comment says otherwise.  White space is what isspace()
 * says in the current locale; digits and letters are those of ASCII.
 *
 * Formatters write what fits into the size bytes at buffer, always terminated, and return the
 * length of the whole text, so a result of size or more means that it was cut.  With size 0 they
 * write nothing, and buffer may be null.
 *
 * No state but the trace word: safe from any thread.
 */
#ifndef RUK_ADDRESS_H
#define RUK_ADDRESS_H

#include "ruk/types.h"

#ifdef __cplusplus
extern "C" {
#endif

enum kt_address_sizes {
    KT_MAC_ADDRESS_SIZE = 6,
    KT_IPV6_ADDRESS_SIZE = 16,
    KT_INTF_UUID_SIZE = 48
};

/*
 * Traces of kt_parse_mac_address: 0x04 texts that go on after 17
 * characters or have neither form's separator, 0x08 and
 * 0x10 whether the first group was padded.
 */
RUK_EXPORT extern uint32_t kt_debug_print_ktstrings;

/*
 * Parses a MAC address into the 6 bytes at mac, byte 0 the first group of the text.  Leading white
 * space is skipped.  Two forms:
 *   six groups of two hexadecimal digits, each ":" or "-" apart     00:1b:2c:3d:4e:5f
 *   three groups of four hexadecimal digits, each "." or "-" apart  001b.2c3d.4e5f
 * A first group of one digit before a ":" is padded with 0; no other group is.  White space after
 * 17 characters ends the text; any other character there fails.  In the shorter form whatever
 * follows the last group is ignored, except that hexadecimal digits belong to it and the low 16
 * bits of that longer number count.
 *
 * Groups are stored as they are read: a failure leaves the bytes of the groups before it written.
 */
RUK_EXPORT int32_t kt_parse_mac_address(uint8_t *mac, const char *text);

/*
 * Parses "a.b.c.d" into *value, whose four bytes in memory are the octets in text order (network
 * byte order).  Leading white space is skipped, leading zeros are decimal (010 is 10), and
 * anything may follow after white space.
 */
RUK_EXPORT int32_t kt_parse_ip_address(uint32_t *value, const char *text);

/*
 * Parses the text form of RFC 4291, section 2.2, dotted-quad tail included, into the 16 bytes at
 * address, in network order.  No white space.  Wider than the RFC in two ways: a group may have
 * any number of leading zeros, and "::" may stand for no group at all (1:2:3:4:5:6:7::8).
 */
RUK_EXPORT int32_t kt_parse_ipv6_address(uint8_t *address, const char *text);

/*
 * Copies at most 48 bytes of text into the 48 bytes at uuid and fills the rest with zeros: 48
 * characters or more leave no terminator.  If the last character copied is a line feed it becomes
 * a terminator.  The syntax is not checked.  Always returns 0.
 */
RUK_EXPORT int32_t kt_parse_intf_uuid(char *uuid, const char *text);

/* Formats the 6 bytes at mac as "00:1b:2c:3d:4e:5f". */
RUK_EXPORT int32_t snprintf_mac_address(char *buffer, uint32_t size, const uint8_t *mac);

/* Formats value, as kt_parse_ip_address stores it, as "10.1.2.3". */
RUK_EXPORT int32_t snprintf_ip_address(char *buffer, uint32_t size, uint32_t value);

/*
 * Formats the 16 bytes at address as eight groups of four digits, nothing left out:
 * "0000:0000:0000:0000:0000:0000:0000:0001".  A null address gives -1 and writes nothing.
 */
RUK_EXPORT int32_t snprintf_ipv6_address(char *buffer, uint32_t size, const uint8_t *address);

/* Does nothing; callers of old link against it. */
RUK_EXPORT void kt_format_mac_address(void);

#ifdef __cplusplus
}
#endif

#endif /* RUK_ADDRESS_H */
