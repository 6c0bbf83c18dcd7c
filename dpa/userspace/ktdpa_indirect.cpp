// The Agent's call forms, and the dump of a request record.
#include "ruk/agent.h"

#include "dpa/wire/call_forms.h"
#include "infra/utils/kttrace.h"

uint32_t kt_debug_print_ktdpa_indirect = KT_TRACE_DEFAULT;

namespace
{

constexpr wire::Forms k_forms{
    .path = "dpa/userspace/ktdpa_indirect",
    .trace = &kt_debug_print_ktdpa_indirect,
    .announces_call = true,
    .simple_failure_level = KT_LEVEL_DEBUG,
    .version = KT_AGENT_VERSION,
    .descriptor = wire::Descriptor(kt_dpa_call_fd),
    .socket_api = kt_dpa_socket_api,
    .simple = {"kt_dpa_call_indirect_simple", 0, 0, 105},
    .indirect1 = {"kt_dpa_call_indirect1", 134, 0, 152},
    .indirect2 = {"kt_dpa_call_indirect2", 190, 204, 217},
};

} // namespace

int32_t kt_dpa_call_indirect_simple(uint16_t opcode, int32_t ident, uint8_t flags, void *buf,
                                    uint32_t bsize)
{
    return wire::call_simple(k_forms, {opcode, ident, flags}, buf, bsize);
}

int32_t kt_dpa_call_indirect1(uint16_t opcode, int32_t ident, uint8_t flags, void *buf,
                              uint32_t bsize, const uint32_t *count)
{
    return wire::call_indirect1(k_forms, {opcode, ident, flags}, {buf, bsize, count});
}

int32_t kt_dpa_call_indirect2(uint16_t opcode, int32_t ident, uint8_t flags, void *buf1,
                              uint32_t bsize1, const uint32_t *count1, void *buf2, uint32_t bsize2,
                              const uint32_t *count2)
{
    return wire::call_indirect2(k_forms, {opcode, ident, flags}, {buf1, bsize1, count1},
                                {buf2, bsize2, count2});
}

void kt_dpa_api_print_di(const char *title, const AgentRequest *request)
{
    const uint32_t &word = kt_debug_print_brel_dpa_api;
    constexpr uint32_t dump = KT_LEVEL_INFO;
    kt_trace(word, dump, "%s\n", title);
    kt_trace(word, dump, "DPA API status %d\n", request->status);
    kt_trace(word, dump, "DPA API opcode %d\n", request->opcode);
    kt_trace(word, dump, "DPA API version %d\n", request->version);
    kt_trace(word, dump, "DPA API ident %d\n", request->ident);
    kt_trace(word, dump, "DPA API flags1 %x flags2 %x\n", request->flags1, request->flags2);
    kt_trace(word, dump, "DPA API ptr1 %p bsize1 %d\n", request->ptr1,
             static_cast<int32_t>(request->bsize1));
    // Kept: this size has no digit in its label.
    kt_trace(word, dump, "DPA API ptr2 %p bsize %d\n", request->ptr2,
             static_cast<int32_t>(request->bsize2));
    kt_trace(word, dump, "DPA API esize1 %d  elements1 %d\n", static_cast<int32_t>(request->esize1),
             static_cast<int32_t>(request->elements1));
    kt_trace(word, dump, "DPA API esize2 %d  elements2 %d\n", static_cast<int32_t>(request->esize2),
             static_cast<int32_t>(request->elements2));
}
