/*
 * Names of interface indices: an IfIndex (ruk/if_index.h) as text, and such text back to an
 * IfIndex.
 *
 * Formatting
 *   The formatters write a text into the size bytes at buffer: at most size - 1 characters and
 *   always a terminator, so a longer text is cut.  They return the length of the whole text; a
 *   result of size or more means that it was cut.  A result of 0 means that there is no text;
 *   buffer then holds the empty one, except where a function says otherwise.
 *   A size below 1 (or a null buffer) writes nothing; the result is the same as for a large
 *   buffer, except where a function says otherwise.
 *   The sprintf_ forms take a buffer of 32 bytes.
 *   Slots and ports are shown counted from 1, as an operator types them.
 *   An index that the type check refuses (if_index_get_type: types 0, 3 and 75 and above) has no
 *   name; loopbacks are among them, since the check reads their top byte 0xFE as type 126.
 *   Types that the check accepts but that have no name of their own are shown as "0x%08x".
 *
 * Parsing
 *   A name is a keyword and up to nine decimal numbers, its coordinates.  A keyword's place in the
 *   list of keywords is the interface kind, which is not the type of the IfIndex.
 *   The list, ten to a line:
 *      0  Unknown, fc, gigabitethernet, vsan, iscsi, port-channel, cpp, fcip, mgmt, tk,
 *     10  xl, svc, sup-fc, fc-tunnel, ipc, loopback, vlan, null, kiro, bay,
 *     20  ext, san-port-channel, ethernet-port-channel, tunnel, ethernet, sup-eth, dorsa,
 *         vethernet, vfc, remote-ethernet,
 *     30  pemu, overlay, lveth, veth, ruk-ethernet, tunnel-te, mti, control, data, vfc-veth,
 *     40  vfc-port-channel, plc, serial, cellular, dialer, pseudowire, wimax, efp-ethernet,
 *         efp-ethernet-port-channel, vfi,
 *     50  shadow-pc, shadow-fabpc, wpan, wifi, glt, vni, vsi-ethernet,
 *         vsi-ethernet-port-channel, vtep, bdi,
 *     60  IPStorage, nve, ii, Super, 10GigEther, POS, RP-to-RP, Autotunnel, eth-port-channel.
 *
 * No state besides the platform word of ruk/if_index.h and the environment variable
 * SYSMGR_VDC_ID, which two kinds of the parser read: safe from any thread while nobody changes
 * the environment.
 */
#ifndef RUK_IF_INDEX_NAME_H
#define RUK_IF_INDEX_NAME_H

#include "ruk/types.h"

#ifdef __cplusplus
extern "C" {
#endif

enum if_db_result { IF_DB_OK = 0, IF_DB_FAILED = 7 };

/* What the sprintf_ forms take their buffer to hold, and the most coordinates of a name. */
enum { IF_INDEX_NAME_SIZE = 32, IF_INDEX_NAME_COORDINATES = 9 };

/* Writes the interface database's name of value, else its long name ("Ethernet1/5"). */
RUK_EXPORT int32_t snprintf_if_index(char *buffer, int32_t size, IfIndex value);

/* Writes the long name of value without asking the interface database. */
RUK_EXPORT int32_t snprintf_if_index_native(char *buffer, int32_t size, IfIndex value);

/* Writes the interface database's name of value, else its short name ("Eth1/5"). */
RUK_EXPORT int32_t snprintf_if_index_short(char *buffer, int32_t size, IfIndex value);

/* Writes the short name of value without asking the interface database. */
RUK_EXPORT int32_t snprintf_if_index_short_native(char *buffer, int32_t size, IfIndex value);

/*
 * Writes the interface database's name of value, which is asked (if_db_ifindex2str_wrapper) for
 * physical Fibre Channel ports (type 1) only.  Returns the length of the text that stands in
 * buffer, at most size, or 0 when the database wasn't asked, failed, or gave an empty name.
 * A size below 1 asks nothing and gives 0.
 */
RUK_EXPORT int32_t snprintf_if_index_from_if_db(char *buffer, int32_t size, IfIndex value);

/*
 * Writes the diagnostic name of value: "xgfc <channel>/<slot>/<port>" and
 * "ipc <channel>/<subtype>/<argument>" for the member forms of a SAN port-channel, "sup-fc" or
 * "lc-eth" with labels of side and priority for an inband port; for all else as snprintf_if_index.
 */
RUK_EXPORT int32_t snprintf_if_index_internal(char *buffer, int32_t size, IfIndex value);

/*
 * Writes the long name of pair[0] and, when pair[1] differs, "-" and a number of pair[1]
 * ("Vlan10-20").  Returns
 *   - 0, leaving buffer untouched, when the ends differ in type or the type check refuses one;
 *   - 0, with an empty buffer, when the name of pair[0] doesn't fit (always so for a size below 1,
 *     which writes nothing);
 *   - 0, with the name of pair[0] in buffer, when "-" and the number alone are size long or more;
 *   - twice the length of the name when the type has no number to show: callers rely on it;
 *   - else the length of the whole text, of which buffer may hold only the start.
 */
RUK_EXPORT int32_t snprintf_if_index_range(char *buffer, int32_t size, const IfIndex pair[2]);

/*
 * As snprintf_if_index_range with the short name; the number after "-" differs for the types
 * lveth, veth, vfc, overlay and eobc.
 */
RUK_EXPORT int32_t snprintf_if_index_range_short(char *buffer, int32_t size, const IfIndex pair[2]);

/* snprintf_if_index into the 32 bytes at buffer. */
RUK_EXPORT int32_t sprintf_if_index(char *buffer, IfIndex value);

/* snprintf_if_index_short into the 32 bytes at buffer. */
RUK_EXPORT int32_t sprintf_if_index_short(char *buffer, IfIndex value);

/* snprintf_if_index_internal into the 32 bytes at buffer. */
RUK_EXPORT int32_t sprintf_if_index_internal(char *buffer, IfIndex value);

/*
 * The interface database: writes the name that it knows for value, terminated, into the size
 * bytes at buffer.  Returns IF_DB_OK or IF_DB_FAILED.  This one knows no names and always fails,
 * leaving buffer untouched.  It is weak: a host with an interface database links its own.
 */
RUK_EXPORT int32_t if_db_ifindex2str_wrapper(char *buffer, int32_t size, IfIndex value);

/*
 * The interface database: stores the IfIndex of name through out.  Returns IF_DB_OK or
 * IF_DB_FAILED.  This one knows no names and always fails, leaving *out untouched.  Weak, too.
 */
RUK_EXPORT int32_t if_db_str2ifindex_wrapper(const char *name, IfIndex *out);

/*
 * Returns 1 when value is a physical port: one of the types phy_fc, phy_eth, phy_ethernet and
 * sat_phy_eth that is no sub-interface, or a management port.  Else 0.
 */
RUK_EXPORT int32_t if_index_is_physical_interface(IfIndex value);

/*
 * Stores the IfIndex of name through out.  Returns 1, or 0 when the name is not understood.
 *
 * The name starts, after blanks (no other white space), with a keyword of the list above in any
 * mix of cases; the first of the list that name begins with counts, whatever follows, and
 * "vethernet" is passed over ("vethernet5" is a "veth").  Then come the numbers, each parted from
 * the next by anything that is no digit; where the last character between two of them is "," or
 * "-" the name ends, so of a list or range the first interface counts.  A tenth number gives 0.
 * A number is decimal; it is held to the largest of signed 64 bits, then cut to the low 32.
 * "null0", with nothing before but blanks and nothing behind, is the null interface.
 *
 * *out is left untouched on 0, and when the result is 1 as ulx_interface_coordinates_to_ifindex
 * tells.  A null name or out gives 0.
 */
RUK_EXPORT int32_t ulx_interface_name_to_ifindex(const char *name, IfIndex *out);

/*
 * Stores the IfIndex of an interface kind with count numbers at coordinates through out.  Returns
 * 1, or 0 for a kind that is not supported or a count that the kind doesn't take; *out is then
 * left untouched.  Numbers beyond those that a kind uses are ignored; one that a kind uses beyond
 * count is 0.
 *
 * Numbers out of range leave *out untouched as well, yet the result is 1, for all kinds but
 * ethernet, veth and ruk-ethernet, for which it is 0.  Also 1 without a value: mgmt and control
 * with a count other than 1 or 2, and bay and ext, which only the interface database knows.
 *
 * The kinds vlan and tunnel take the virtual device context from the environment variable
 * SYSMGR_VDC_ID, read as a decimal number like those of a name (1 when unset, 0 when it is no
 * number); one that is out of range is a number out of range as above.
 *
 * A null out gives 0; coordinates may be null when count is 0 or less.
 */
RUK_EXPORT int32_t ulx_interface_coordinates_to_ifindex(int32_t kind, const int32_t *coordinates,
                                                        int32_t count, IfIndex *out);

#ifdef __cplusplus
}
#endif

#endif /* RUK_IF_INDEX_NAME_H */
