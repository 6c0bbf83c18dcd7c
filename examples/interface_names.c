/*
 * Translates between interface names and interface indices:  interface_names [NAME|0xINDEX]...
 *
 * A number in hexadecimal is taken as an index and its names are printed; anything else is taken
 * as a name as an operator types it, and its index and names are printed.
 */
#include <errno.h>
#include <inttypes.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "ruk/if_index.h"
#include "ruk/if_index_name.h"

/* Reads "0x1a000000".  False when the text is no such number of 32 bits. */
static bool parse_index(const char *text, IfIndex *value)
{
    if (strncmp(text, "0x", 2) != 0) {
        return false;
    }
    char *end = NULL;
    errno = 0;
    const unsigned long number = strtoul(text, &end, 16);
    *value = (IfIndex)number;
    return errno == 0 && *end == '\0' && number <= UINT32_MAX;
}

/*
 * Stores the index of a name.  The parser answers 1 as soon as the words are right, even if the
 * numbers behind them are out of range; it then leaves the result alone.  So the result starts as
 * an index that no interface has, and one that is still there afterwards means "no such interface".
 */
static bool index_of(const char *name, IfIndex *value)
{
    *value = 0;
    return ulx_interface_name_to_ifindex(name, value) == 1 && *value != 0;
}

/* The formatters return the length of the whole text, like snprintf, and 0 when there is no name.
 */
static bool print_names(IfIndex value)
{
    char name[IF_INDEX_NAME_SIZE];
    char short_name[IF_INDEX_NAME_SIZE];
    if (snprintf_if_index(name, sizeof name, value) == 0 ||
        snprintf_if_index_short(short_name, sizeof short_name, value) == 0) {
        return false;
    }
    printf("0x%08" PRIx32 "  %s  %s%s\n", value, name, short_name,
           if_index_is_physical_interface(value) ? "  (physical port)" : "");
    return true;
}

int main(int argc, char **argv)
{
    if (argc < 2) {
        fputs("Usage: interface_names NAME|0xINDEX...\n", stderr);
        return EXIT_FAILURE;
    }
    int result = EXIT_SUCCESS;
    for (int i = 1; i < argc; ++i) {
        IfIndex value = 0;
        const bool understood = parse_index(argv[i], &value) || index_of(argv[i], &value);
        if (!understood || !print_names(value)) {
            fprintf(stderr, "interface_names: no interface is called \"%s\"\n", argv[i]);
            result = EXIT_FAILURE;
        }
    }
    return result;
}
