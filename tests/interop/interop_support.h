// Helpers of the interoperability tests: running the Python peer (dbf_peer.py, which drives
// two independent dBASE libraries) and the engine's own view of a table in the same plain
// form, so that the two can be compared line by line.
#pragma once

#include <cctype>
#include <cstdio>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "nq_platform.h"
#include "table_engine.h"
#include "test_support.h"

namespace interop {

// What a reader saw of a table: its fields, its live and its deleted records, each value in
// the peer's normal form (see dbf_peer.py).
struct Dump {
    std::vector<std::string> fields;  // "NAME TYPE LENGTH DECIMALS"
    std::vector<std::vector<std::string>> live;
    std::vector<std::vector<std::string>> deleted;
    bool ok = false;
    std::string output;  // what the peer printed, for failure messages
};

inline std::string peer_script() { return std::string(NQ_TEST_SOURCE_DIR) + "/tests/interop/dbf_peer.py"; }
inline std::string fixtures() { return std::string(NQ_TEST_SHARED_DIR) + "/fixtures"; }

inline std::string quoted(const std::string &text) {
    std::string out = "'";
    for (char c : text) {
        if (c == '\'') {
            out += "'\\''";
        } else {
            out += c;
        }
    }
    return out + "'";
}

// Runs the peer with the arguments; its standard output, and whether it ended well.
inline bool run_peer(const std::vector<std::string> &arguments, std::string *output) {
    std::string command = "/usr/bin/python3 " + quoted(peer_script());
    for (const std::string &argument : arguments) command += " " + quoted(argument);
    command += " 2>&1";
    FILE *pipe = ::popen(command.c_str(), "r");
    if (!pipe) return false;
    char buffer[4096];
    size_t got;
    output->clear();
    while ((got = std::fread(buffer, 1, sizeof(buffer), pipe)) > 0) output->append(buffer, got);
    return ::pclose(pipe) == 0;
}

inline std::string unhex(const std::string &hex) {
    if (hex == "-") return "";
    std::string out;
    for (size_t i = 0; i + 1 < hex.size(); i += 2) {
        out += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
    }
    return out;
}

inline Dump parse_dump(const std::string &text) {
    Dump dump;
    dump.output = text;
    std::istringstream lines(text);
    std::string line;
    while (std::getline(lines, line)) {
        std::istringstream words(line);
        std::string kind;
        words >> kind;
        if (kind == "FIELD") {
            dump.fields.push_back(line.substr(6));
            continue;
        }
        if (kind != "R" && kind != "D") continue;
        std::vector<std::string> values;
        std::string word;
        while (words >> word) values.push_back(unhex(word));
        (kind == "R" ? dump.live : dump.deleted).push_back(values);
    }
    return dump;
}

// A table as one of the peer's libraries reads it ("dbfread" or "dbf").
inline Dump peer_dump(const std::string &reader, const std::string &path) {
    std::string output;
    const bool ok = run_peer({"dump", reader, path}, &output);
    Dump dump = parse_dump(output);
    dump.ok = ok;
    return dump;
}

// What the peer wrote (kind "db3" or "fp"), as it says it wrote it.
inline Dump peer_write(const std::string &kind, const std::string &path, int block_size = 0) {
    std::vector<std::string> arguments = {"write", kind, path};
    if (block_size) arguments.push_back(std::to_string(block_size));
    std::string output;
    const bool ok = run_peer(arguments, &output);
    Dump dump = parse_dump(output);
    dump.ok = ok;
    return dump;
}

inline std::string trimmed_right(std::string text, const char *drop = " ") {
    const size_t end = text.find_last_not_of(drop);
    return end == std::string::npos ? "" : text.substr(0, end + 1);
}

// One field of the current record in the peer's normal form.
inline std::string normal_value(column4 *column) {
    if (column->memo) return std::string(column4_memo_ptr(column), column4_memo_len(column));
    const std::string raw(column4_ptr(column), column->length);
    switch (column->type) {
        case 'N':
        case 'F': {
            if (trimmed_right(raw).empty()) return "";
            char text[128];
            std::snprintf(text, sizeof(text), "%.*f", static_cast<int>(column->decimals),
                          c4atod(raw.c_str(), static_cast<int>(raw.size())));
            return text;
        }
        case 'D':
            return trimmed_right(raw, " 0").empty() ? "" : raw;
        case 'L': {
            const char c = raw.empty() ? ' ' : raw[0];
            if (std::strchr("TtYy", c)) return "T";
            if (std::strchr("FfNn", c)) return "F";
            return "?";
        }
        default:
            return trimmed_right(raw, std::string(" \0", 2).c_str());
    }
}

// The engine's view of an open table. With only_types, fields of other types are left out
// (of both the field list and the records).
inline Dump engine_dump(table4 *table, const char *only_types = nullptr) {
    Dump dump;
    std::vector<column4 *> columns;
    for (uint32_t i = 0; i < table->column_count; ++i) {
        column4 *column = &table->columns[i];
        if (only_types && !std::strchr(only_types, column->type)) continue;
        columns.push_back(column);
        dump.fields.push_back(std::string(column->name) + " " + static_cast<char>(column->type) + " " +
                              std::to_string(column->length) + " " + std::to_string(column->decimals));
    }
    const int32_t count = table4_count(table);
    dump.ok = count >= 0;
    for (int32_t n = 1; n <= count; ++n) {
        if (table4_go(table, n) != 0) {
            dump.ok = false;
            break;
        }
        std::vector<std::string> values;
        for (column4 *column : columns) values.push_back(normal_value(column));
        (table4_deleted(table) ? dump.deleted : dump.live).push_back(values);
    }
    return dump;
}

// The same selection made from a peer's dump: the fields whose type letter is listed.
inline Dump select_types(const Dump &from, const char *only_types) {
    Dump out;
    out.ok = from.ok;
    std::vector<size_t> keep;
    for (size_t i = 0; i < from.fields.size(); ++i) {
        std::istringstream words(from.fields[i]);
        std::string name, type;
        words >> name >> type;
        if (type.size() == 1 && std::strchr(only_types, type[0])) {
            keep.push_back(i);
            out.fields.push_back(from.fields[i]);
        }
    }
    auto pick = [&](const std::vector<std::vector<std::string>> &rows) {
        std::vector<std::vector<std::string>> picked;
        for (const auto &row : rows) {
            std::vector<std::string> values;
            for (size_t i : keep) values.push_back(i < row.size() ? row[i] : "<missing>");
            picked.push_back(values);
        }
        return picked;
    };
    out.live = pick(from.live);
    out.deleted = pick(from.deleted);
    return out;
}

}  // namespace interop
