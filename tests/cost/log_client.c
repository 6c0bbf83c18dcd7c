/* log_client N: prints the newest N entries as "ruklog show last N" does. */
#define _GNU_SOURCE

#include "log_client.h"

#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

struct request {
    uint16_t opcode, version;
    uint8_t flags1, flags2;
    uint16_t reserved;
    int32_t ident, status;
    uint32_t bsize1, bsize2, elements1, elements2, esize1, esize2;
    const void *ptr1, *ptr2;
};

struct info {
    uint32_t available, enabled;
    uint64_t total, wrapped, lost, skipped, stop_after;
};

static struct {
    struct request head;
    union {
        uint32_t version;
        uint64_t value;
        struct info info;
        struct entry entry;
    } body;
} block;

static int agent;

const char header_line[] = "Timestamp                  Entry CPU  Mod Lv         Message\n";

const char *level_name(unsigned level)
{
    static const char *const names[] = {"Error", "Notice", "Warning", "Info",
                                        "Debug", "Temp",   "Packet",  "Log"};
    for (unsigned i = 0; i < 8; ++i) {
        if (level == 1U << i) {
            return names[i];
        }
    }
    return "";
}

/* One exchange of the block; its body keeps what it holds. */
static int exchange(uint16_t opcode, int32_t ident, uint8_t flags, uint32_t size)
{
    block.head = (struct request){
        .opcode = opcode, .version = 348, .flags1 = flags, .ident = ident, .bsize1 = size};
    const size_t length = sizeof block.head + size;
    if (send(agent, &block, length, MSG_NOSIGNAL) != (ssize_t)length ||
        recv(agent, &block, length, 0) != (ssize_t)length) {
        exit(1);
    }
    return block.head.status;
}

static void connect_to_agent(void)
{
    const struct sockaddr_un address = {AF_UNIX, "/var/tmp/brelovs_api_socket"};
    agent = socket(AF_UNIX, SOCK_STREAM, 0);
    if (connect(agent, (const struct sockaddr *)&address, sizeof address) != 0 ||
        fchmod(agent, S_IRWXU) != 0) {
        exit(1);
    }
}

/* The line feed that every message ends in. */
static void settle(char *message)
{
    const size_t length = strnlen(message, 127);
    if (length == 0 || message[length - 1] != '\n') {
        message[126] = '\n';
        message[127] = '\0';
    }
}

int main(int argc, char **argv)
{
    const uint64_t count = argc > 1 ? strtoull(argv[1], NULL, 10) : 25;
    connect_to_agent();
    exchange(63, 0, 0x01, sizeof block.body.version);
    exchange(236, 2, 0x03, sizeof block.body.value);
    exchange(233, 0, 0x01, sizeof block.body.info);
    const struct info info = block.body.info;
    print_header();
    block.body.entry.number = count < info.available - 1 ? info.total - count - 1 : UINT64_MAX;
    while (exchange(234, 0, 0x03, sizeof block.body.entry) == 0) {
        settle(block.body.entry.message);
        print_entry(&block.body.entry);
    }
    block.body.value = 0;
    exchange(236, 3, 0x03, sizeof block.body.value);
    finish();
    return 0;
}
