// SPDX-License-Identifier: MIT
#include "shell/output.hpp"

#include <cstdio>
#include <cstring>

#include <nlohmann/json.hpp>

#include "core/lock.hpp"
#include "shell/catalogue.hpp"

namespace qdsim {
namespace shell {
namespace {

struct Output {
    OutputMode mode = OutputMode::text;
    std::function<void(const std::string &)> sink;
    std::function<void(const PrinterFlush &)> flush_sink;
};

Output &output() {
    static Output o;
    return o;
}

using ordered = nlohmann::ordered_json;

template <class T>
T read(const std::vector<std::uint8_t> &b) {
    T v{};
    std::memcpy(&v, b.data(), sizeof v);
    return v;
}

std::string text_of(const std::vector<std::uint8_t> &b) {
    std::size_t n = 0;
    while (n < b.size() && b[n] != 0) ++n;
    return std::string(reinterpret_cast<const char *>(b.data()), n);
}

ordered unsigned_by_length(const std::vector<std::uint8_t> &b) {
    if (b.size() >= 8) return read<std::uint64_t>(b);
    if (b.size() >= 4) return read<std::uint32_t>(b);
    if (b.size() >= 2) return read<std::uint16_t>(b);
    if (b.size() == 1) return b[0];
    return nullptr;
}

ordered value_of(const PrintedValue &v) {
    const AttributeInfo *info = find_attribute(v.attr);
    if (info == nullptr) {
        switch (v.attr >> 24) {
        case 0x30: return text_of(v.bytes);
        case 0x11: return v.bytes.size() >= 4 ? ordered(read<std::int32_t>(v.bytes)) : ordered(nullptr);
        case 0x02: return v.bytes.empty() ? ordered(nullptr) : ordered(v.bytes[0]);
        default: return unsigned_by_length(v.bytes);
        }
    }
    switch (info->type) {
    case QDCLI_ATTR_TEXT: return text_of(v.bytes);
    case QDCLI_ATTR_I32: return v.bytes.size() >= 4 ? ordered(read<std::int32_t>(v.bytes)) : ordered(nullptr);
    case QDCLI_ATTR_FLAGS8: {
        bool any = false;
        for (std::uint8_t byte : v.bytes) any = any || byte != 0;
        return any;
    }
    case QDCLI_ATTR_MARKER: return nullptr;
    default: return unsigned_by_length(v.bytes);
    }
}

std::string xml_escape(const std::string &s) {
    std::string out;
    for (char c : s) {
        const unsigned char u = static_cast<unsigned char>(c);
        switch (c) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '"': out += "&quot;"; break;
        case '\'': out += "&apos;"; break;
        default:
            // Characters XML 1.0 does not allow become '?'.
            out += (u < 0x20 && c != '\t' && c != '\n' && c != '\r') ? '?' : c;
        }
    }
    return out;
}

std::string xml_text(const ordered &value) {
    if (value.is_string()) return xml_escape(value.get<std::string>());
    if (value.is_null()) return {};
    return value.dump();
}

}  // namespace

void deliver(const std::string &text) {
    if (text.empty()) return;
    SwitchLock lock(switch_mutex());
    Output &o = output();
    if (o.sink) {
        o.sink(text);
    } else {
        std::fwrite(text.data(), 1, text.size(), stdout);
        std::fflush(stdout);
    }
}

void deliver_flush(Flush flush) {
    std::function<void(const PrinterFlush &)> flush_sink;
    {
        SwitchLock lock(switch_mutex());
        flush_sink = output().flush_sink;
    }
    if (!flush_sink) {
        deliver(render(flush, mode()));
        return;
    }
    PrinterFlush out;
    out.text = std::move(flush.text);
    out.values.reserve(flush.values.size());
    for (PrintedValue &v : flush.values) out.values.push_back(Attribute{v.attr, std::move(v.bytes)});
    flush_sink(out);
}

OutputMode mode() {
    SwitchLock lock(switch_mutex());
    return output().mode;
}

std::string render(const Flush &flush, OutputMode mode) {
    switch (mode) {
    case OutputMode::text: return flush.text;
    case OutputMode::json: {
        if (flush.values.empty()) return flush.text.empty() ? std::string() : ordered{{"message", flush.text}}.dump() + "\n";
        ordered object = ordered::object();
        for (const PrintedValue &v : flush.values) {
            const std::string name = attribute_name(v.attr);
            ordered value = value_of(v);
            if (!object.contains(name)) {
                object[name] = std::move(value);
            } else {
                ordered &slot = object[name];
                if (!slot.is_array()) slot = ordered::array({slot});
                slot.push_back(std::move(value));
            }
        }
        return object.dump() + "\n";
    }
    case OutputMode::xml: {
        if (flush.values.empty())
            return flush.text.empty() ? std::string() : "<output><message>" + xml_escape(flush.text) + "</message></output>\n";
        std::string out = "<output>";
        for (const PrintedValue &v : flush.values) {
            const std::string name = attribute_name(v.attr);
            out += "<" + name + ">" + xml_text(value_of(v)) + "</" + name + ">";
        }
        return out + "</output>\n";
    }
    }
    return flush.text;
}

}  // namespace shell

void set_output_mode(OutputMode mode) {
    SwitchLock lock(switch_mutex());
    shell::output().mode = mode;
}

OutputMode output_mode() { return shell::mode(); }

void set_flush_sink(std::function<void(const PrinterFlush &)> sink) {
    SwitchLock lock(switch_mutex());
    shell::output().flush_sink = std::move(sink);
}

void set_output_sink(std::function<void(const std::string &)> sink) {
    SwitchLock lock(switch_mutex());
    shell::output().sink = std::move(sink);
}

}  // namespace qdsim
