// Interface UUIDs: the text as the host hands it out, without its line feed.
#include "ruk/address.h"

#include <cstring>

int32_t kt_parse_intf_uuid(char *uuid, const char *text)
{
    const size_t length = strnlen(text, KT_INTF_UUID_SIZE);
    memcpy(uuid, text, length);
    memset(uuid + length, 0, KT_INTF_UUID_SIZE - length);
    if (length > 0 && uuid[length - 1] == '\n') {
        uuid[length - 1] = '\0';
    }
    return 0;
}
