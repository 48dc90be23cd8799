// SPDX-License-Identifier: MIT
// The shell printer: typed arguments, formats, flushes.
#include "printer/printer.hpp"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <map>

#include "core/diagnostics.hpp"
#include "core/errors.hpp"
#include "core/lock.hpp"
#include "core/command_end.hpp"
#include "model/model.hpp"
#include "render/prt_render.hpp"
#include "qdcli/attributes.h"
#include "printer/output.hpp"

namespace qdsim::printer {
namespace {

std::map<std::uint32_t, PrinterFlush> &pending() {
    static std::map<std::uint32_t, PrinterFlush> buffers;
    return buffers;
}

// The printer takes %[-][width][.precision]s and %%; anything else in a
// format is a mistake of the caller (it is printed as it stands).
bool format_is_plain(const char *format) {
    for (const char *p = format; *p; ++p) {
        if (*p != '%') continue;
        ++p;
        if (*p == '%') continue;
        if (*p == '-') ++p;
        while (*p >= '0' && *p <= '9') ++p;
        if (*p == '.') {
            ++p;
            while (*p >= '0' && *p <= '9') ++p;
        }
        if (*p != 's') return false;
    }
    return true;
}

// Value length an attribute type takes (0: any, texts and markers), and
// the type's name in complaints.
std::uint32_t expected_length(qdcli_attr_type type) {
    switch (type) {
    case QDCLI_ATTR_U8: return 1;
    case QDCLI_ATTR_U16: return 2;
    case QDCLI_ATTR_U32:
    case QDCLI_ATTR_I32:
    case QDCLI_ATTR_IF_INDEX: return 4;
    case QDCLI_ATTR_U64:
    case QDCLI_ATTR_FLAGS8: return 8;
    case QDCLI_ATTR_TEXT:
    case QDCLI_ATTR_MARKER: return 0;
    }
    return 0;
}

const char *type_name(qdcli_attr_type type) {
    switch (type) {
    case QDCLI_ATTR_U8: return "u8";
    case QDCLI_ATTR_U16: return "u16";
    case QDCLI_ATTR_U32: return "u32";
    case QDCLI_ATTR_U64: return "u64";
    case QDCLI_ATTR_I32: return "i32";
    case QDCLI_ATTR_IF_INDEX: return "if_index";
    case QDCLI_ATTR_TEXT: return "text";
    case QDCLI_ATTR_FLAGS8: return "flags8";
    case QDCLI_ATTR_MARKER: return "marker";
    }
    return "?";
}

// The library's catalogue (compiled in) names and sizes the values; the
// type, not the type byte, decides, and an ID outside it is not checked.
void check_argument(std::uint32_t attr, const void *value, std::uint32_t length) {
    const qdcli_attr_info *info = qdcli_attr_find(attr);
    if (info == nullptr) return;
    if (value == nullptr && length > 0) {
        diagnostic("printer argument " + hex32(attr) + " (" + info->name + ") has no value");
        return;
    }
    if (info->type == QDCLI_ATTR_TEXT) {
        const auto *text = static_cast<const char *>(value);
        if (length == 0 || text == nullptr || std::memchr(text, 0, length) != text + length - 1)
            diagnostic("printer argument " + hex32(attr) + " (" + info->name +
                       ") is a text: its length is the text's plus its NUL, given " + std::to_string(length));
        return;
    }
    const std::uint32_t expected = expected_length(info->type);
    if (expected && length != expected)
        diagnostic("printer argument " + hex32(attr) + " (" + info->name + ") is a " + type_name(info->type) + " of " +
                   std::to_string(expected) + " bytes, given " + std::to_string(length));
}

// Output left behind when a command ends is delivered with a complaint.
const CommandEndRegistrar deliver_leftovers{[](std::uint32_t mts_handle) {
    auto it = pending().find(output_handle(mts_handle));
    if (it == pending().end()) return;
    PrinterFlush left = std::move(it->second);
    pending().erase(it);
    if (left.text.empty() && left.values.empty()) return;
    diagnostic("command " + hex32(mts_handle) + " ended with " + std::to_string(left.text.size()) +
               " characters of printer output never flushed");
    deliver_flush(std::move(left));
}};

}  // namespace
}  // namespace qdsim::printer

using namespace qdsim;

extern "C" {

std::uint32_t cmd_paraminfo_to_rxhandle(cmd_paraminfo *pinfo) {
    return printer::output_handle(pinfo ? pinfo->mts_handle : 0);
}

std::int32_t cmd_prt_arg_make(cmd_prt_arg *arg, std::uint32_t attr_id, const void *value, std::uint32_t length) {
    SwitchLock lock(switch_mutex());
    if (arg == nullptr) {
        diagnostic("cmd_prt_arg_make without an argument record");
        return kErrBadArgument;
    }
    printer::check_argument(attr_id, value, length);
    qdprt::encode_arg(arg, attr_id, value, length);
    return 0;
}

std::int32_t cmd_prt(std::uint32_t handle, const char *format, ...) {
    SwitchLock lock(switch_mutex());
    if (!printer::is_output_handle(handle)) {
        diagnostic("cmd_prt with handle " + hex32(handle) + ", which is not an output handle");
        return kErrBadArgument;
    }
    if (format == nullptr) {
        diagnostic("cmd_prt without a format");
        return kErrBadArgument;
    }
    if (!printer::format_is_plain(format))
        diagnostic(std::string("cmd_prt format \"") + format + "\" has a conversion other than %s and %%");
    const std::size_t count = qdprt::count_conversions(format);
    std::vector<qdprt::ArgView> args;
    va_list ap;
    va_start(ap, format);
    for (std::size_t i = 0; i < count; ++i) {
        const cmd_prt_arg *record = va_arg(ap, const cmd_prt_arg *);
        if (record == nullptr) diagnostic(std::string("cmd_prt argument ") + std::to_string(i + 1) + " of \"" + format + "\" is null");
        args.push_back(qdprt::decode_arg(record));
    }
    va_end(ap);
    PrinterFlush &out = printer::pending()[handle];
    out.text += qdprt::render(format, args);
    for (const qdprt::ArgView &a : args) {
        Attribute v;
        v.id = a.attr;
        if (a.value != nullptr) {
            const auto *bytes = static_cast<const std::uint8_t *>(a.value);
            v.value.assign(bytes, bytes + a.length);
        }
        out.values.push_back(std::move(v));
    }
    return 0;
}

std::int32_t cmd_prt_send(std::uint32_t handle) {
    SwitchLock lock(switch_mutex());
    if (!printer::is_output_handle(handle)) {
        diagnostic("cmd_prt_send with handle " + hex32(handle) + ", which is not an output handle");
        return kErrBadArgument;
    }
    auto it = printer::pending().find(handle);
    if (it == printer::pending().end()) return 0;
    PrinterFlush flush = std::move(it->second);
    printer::pending().erase(it);
    printer::deliver_flush(std::move(flush));
    return 0;
}

}  // extern "C"
