// The three call forms, written once for both socket clients.
#include "dpa/wire/call_forms.h"

#include "infra/utils/kttrace.h"

namespace wire
{
namespace
{

void announce(const Forms &forms, const Form &form, const Call &call)
{
    if (forms.announces_call && kt_traces(*forms.trace, KT_LEVEL_DEBUG)) {
        // Kept: there is no ioctl, but readers of the trace know the line by these words.
        kt_trace(*forms.trace, KT_LEVEL_DEBUG, "%s: Generating ioctl() for opcode %d\n",
                 form.function, call.opcode);
    }
}

AgentRequest record_of(const Forms &forms, const Call &call)
{
    AgentRequest request{};
    request.opcode = call.opcode;
    request.version = forms.version;
    request.flags1 = call.flags;
    request.ident = call.ident;
    return request;
}

bool is_counted(const Call &call)
{
    return (call.flags & AGENT_FLAG_COUNTED) != 0;
}

void report_opcode(const Forms &forms, int32_t line, const Call &call)
{
    kt_trace(*forms.trace, KT_LEVEL_DEBUG, "%s/%d: Failed, opcode %d\n", forms.path, line,
             call.opcode);
}

// In counted mode every buffer needs its count.
bool has_count(const Forms &forms, const Call &call, const Buffer &buffer, int32_t line)
{
    if (!is_counted(call) || buffer.count != nullptr) {
        return true;
    }
    report_opcode(forms, line, call);
    return false;
}

void put_buffer1(AgentRequest &request, const Call &call, const Buffer &buffer)
{
    request.ptr1 = buffer.start;
    request.bsize1 = buffer.size;
    request.esize1 = is_counted(call) ? 1 : 0;
    request.elements1 = is_counted(call) ? *buffer.count : 0;
}

void put_buffer2(AgentRequest &request, const Call &call, const Buffer &buffer)
{
    request.ptr2 = buffer.start;
    request.bsize2 = buffer.size;
    request.esize2 = is_counted(call) ? 1 : 0;
    request.elements2 = is_counted(call) ? *buffer.count : 0;
}

int32_t exchange_record(const Forms &forms, AgentRequest &request)
{
    return forms.socket_api(forms.descriptor.get(), &request, sizeof request);
}

void report_status(const Forms &forms, const AgentRequest &request)
{
    kt_trace(*forms.trace, KT_LEVEL_DEBUG, "di status %d\n", request.status);
}

} // namespace

int32_t call_simple(const Forms &forms, const Call &call, void *buffer, uint32_t size)
{
    const Form &form = forms.simple;
    announce(forms, form, call);
    AgentRequest request = record_of(forms, call);
    request.ptr1 = buffer;
    request.bsize1 = size;
    if (exchange_record(forms, request) == -1) {
        kt_trace(*forms.trace, forms.simple_failure_level, "%s/%d: Failed\n", forms.path,
                 form.failure_line);
    }
    return request.status;
}

int32_t call_indirect1(const Forms &forms, const Call &call, const Buffer &buffer)
{
    const Form &form = forms.indirect1;
    announce(forms, form, call);
    if (!has_count(forms, call, buffer, form.no_count1_line)) {
        return AGENT_STATUS_REFUSED;
    }
    AgentRequest request = record_of(forms, call);
    put_buffer1(request, call, buffer);
    const int32_t result = exchange_record(forms, request);
    if (result == -1) {
        kt_trace(*forms.trace, KT_LEVEL_DEBUG, "%s/%d: Failed: %d, opcode %d\n", forms.path,
                 form.failure_line, result, call.opcode);
        report_status(forms, request);
    }
    return request.status;
}

int32_t call_indirect2(const Forms &forms, const Call &call, const Buffer &buffer1,
                       const Buffer &buffer2)
{
    const Form &form = forms.indirect2;
    announce(forms, form, call);
    if (!has_count(forms, call, buffer1, form.no_count1_line) ||
        !has_count(forms, call, buffer2, form.no_count2_line)) {
        return AGENT_STATUS_REFUSED;
    }
    AgentRequest request = record_of(forms, call);
    put_buffer1(request, call, buffer1);
    put_buffer2(request, call, buffer2);
    if (exchange_record(forms, request) == -1) {
        report_opcode(forms, form.failure_line, call);
        report_status(forms, request);
    }
    return request.status;
}

} // namespace wire
