// Appending a million records (C 20, N 10.2, D, L) to a data file and one sequential skip
// over all of them, through the engine in several set-ups, against plain pwrite/pread of the
// same record bytes in the same run.
//
// The raw cases write and read exactly the bytes the table holds: once record by record (one
// call per record, as the engine's record I/O goes) and once in 64 KB pieces (the floor any
// layer can reach). The engine's cases:
//   shared      every append takes and gives back the append lock and a record lock, reads
//               the count fresh and writes the header: what several writers at once need;
//   file lock   the same table under one file lock: the count is trusted, no record locks;
//   exclusive   an exclusive open with the cache running and writes held back.
// The skip goes from the top to the end of file, reading every field of every record.
// Beside the speeds it counts the calls that reached the system.
//
//   bench_table4_append [records, 1000000] [folder, $TMPDIR or /tmp]
#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "plat_file.h"
#include "table_engine.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr uint32_t kWidth = 1 + 20 + 10 + 8 + 1;
constexpr uint32_t kHeader = 32 * 5 + 1;

double seconds_of(const std::function<bool()> &work, bool *ok) {
    const auto start = Clock::now();
    *ok = work();
    return std::chrono::duration<double>(Clock::now() - start).count();
}

struct Figures {
    std::string label;
    double append_seconds = 0;
    double skip_seconds = 0;
    bool ok = true;
    uint64_t writes = 0, reads = 0, locks = 0;
};

// The bytes of record i as the engine writes them.
void make_record(char *record, uint32_t i) {
    std::memset(record, ' ', kWidth);
    char name[32];
    const int n = std::snprintf(name, sizeof(name), "Pipe %u", i);
    std::memcpy(record + 1, name, static_cast<size_t>(n));
    c4dtoa(i * 0.25 - 1000.0, record + 21, 10, 2);
    date4assign(record + 31, date4julian("20000101") + static_cast<int32_t>(i % 9000));
    record[39] = (i % 3) ? 'T' : 'F';
}

Figures raw(const std::string &path, uint32_t records, bool bulk) {
    Figures f{bulk ? "raw pwrite/pread, 64 KB pieces" : "raw pwrite/pread, one call a record"};
    const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) return Figures{f.label, 0, 0, false};
    std::vector<char> buffer(bulk ? 64 * 1024 / kWidth * kWidth : kWidth);
    const uint32_t per_call = static_cast<uint32_t>(buffer.size() / kWidth);
    bool ok = false;
    f.append_seconds = seconds_of(
        [&] {
            for (uint32_t i = 0; i < records; i += per_call) {
                const uint32_t n = records - i < per_call ? records - i : per_call;
                for (uint32_t k = 0; k < n; ++k) make_record(buffer.data() + k * kWidth, i + k);
                const off_t at = kHeader + static_cast<off_t>(i) * kWidth;
                if (::pwrite(fd, buffer.data(), n * kWidth, at) != static_cast<ssize_t>(n * kWidth)) return false;
            }
            return ::fdatasync(fd) == 0;
        },
        &ok);
    f.ok = ok;
    uint64_t check = 0;
    f.skip_seconds = seconds_of(
        [&] {
            for (uint32_t i = 0; i < records; i += per_call) {
                const uint32_t n = records - i < per_call ? records - i : per_call;
                const off_t at = kHeader + static_cast<off_t>(i) * kWidth;
                if (::pread(fd, buffer.data(), n * kWidth, at) != static_cast<ssize_t>(n * kWidth)) return false;
                for (uint32_t k = 0; k < n; ++k) check += static_cast<unsigned char>(buffer[k * kWidth + 39]);
            }
            return true;
        },
        &ok);
    f.ok = f.ok && ok && check > 0;
    ::close(fd);
    ::unlink(path.c_str());
    return f;
}

enum class Setup { shared, file_lock, exclusive };

Figures engine_case(const std::string &path, uint32_t records, Setup setup) {
    const char *labels[] = {"engine, shared, locks each append", "engine, shared, under a file lock",
                            "engine, exclusive, cache on"};
    Figures f{labels[static_cast<int>(setup)]};
    engine4 *engine = engine4_new(1);
    engine->safety = 0;
    if (setup == Setup::exclusive) {
        engine->exclusive = 1;
        engine->cache_memory = 8u * 1024 * 1024;
        engine->big_buffer_size = 65536;
        engine4_cache_start(engine);
    }
    const column_info columns[] = {{"NAME", 'C', 20, 0}, {"AMOUNT", 'N', 10, 2}, {"SEEN", 'D', 8, 0},
                                   {"OK", 'L', 1, 0},    {nullptr, 0, 0, 0}};
    table4 *table = table4_create(engine, path.c_str(), columns, nullptr);
    if (!table) {
        engine4_end(engine);
        engine4_free(engine);
        return Figures{f.label, 0, 0, false};
    }
    column4 *name = table4_column(table, "NAME");
    column4 *amount = table4_column(table, "AMOUNT");
    column4 *seen = table4_column(table, "SEEN");
    column4 *ok_column = table4_column(table, "OK");
    const auto before = nqplat::file_call_counts();
    bool ok = false;
    f.append_seconds = seconds_of(
        [&] {
            if (setup == Setup::file_lock && table4_lock_file(table) != 0) return false;
            char text[32];
            for (uint32_t i = 0; i < records; ++i) {
                if (table4_append_start(table, 0) != 0) return false;
                std::snprintf(text, sizeof(text), "Pipe %u", i);
                column4_assign(name, text);
                column4_assign_double(amount, i * 0.25 - 1000.0);
                column4_assign_julian(seen, date4julian("20000101") + static_cast<int32_t>(i % 9000));
                column4_assign_logical(ok_column, i % 3);
                if (table4_append(table) != 0) return false;
            }
            if (table4_unlock(table) != 0) return false;
            return table4_flush(table) == 0;
        },
        &ok);
    f.ok = ok && table4_count(table) == static_cast<int32_t>(records);
    uint64_t check = 0;
    uint32_t seen_records = 0;
    f.skip_seconds = seconds_of(
        [&] {
            if (setup == Setup::file_lock && table4_lock_file(table) != 0) return false;
            char text[32];
            for (int rc = table4_top(table); rc == 0; rc = table4_skip(table, 1)) {
                column4_text(name, text, sizeof(text));
                check += static_cast<uint64_t>(column4_long(amount)) + static_cast<uint64_t>(column4_julian(seen)) +
                         static_cast<uint64_t>(column4_true(ok_column)) + static_cast<unsigned char>(text[5]);
                ++seen_records;
            }
            return table->eof && table4_unlock(table) == 0;
        },
        &ok);
    f.ok = f.ok && ok && seen_records == records && check > 0;
    const auto after = nqplat::file_call_counts();
    f.writes = after.writes - before.writes;
    f.reads = after.reads - before.reads;
    f.locks = after.locks - before.locks;
    table4_close(table);
    engine4_end(engine);
    engine4_free(engine);
    ::unlink(path.c_str());
    return f;
}

}  // namespace

int main(int argc, char **argv) {
    const long records = argc > 1 ? std::atol(argv[1]) : 1000000;
    const char *tmp = std::getenv("TMPDIR");
    const std::string folder = argc > 2 ? argv[2] : (tmp && *tmp ? tmp : "/tmp");
    if (records < 1 || records > 20000000) {
        std::fprintf(stderr, "usage: bench_table4_append [records 1..20000000] [folder]\n");
        return 2;
    }
    const uint32_t n = static_cast<uint32_t>(records);
    const double megabytes = static_cast<double>(n) * kWidth / 1e6;
    std::printf("table4 append and skip: %u records of %u bytes (%.1f MB), folder %s\n", n, kWidth, megabytes,
                folder.c_str());
    const std::string raw_path = folder + "/bench_table4_raw.dat";
    const std::string table_path = folder + "/BENCH_T4.DBF";
    std::vector<Figures> all;
    all.push_back(raw(raw_path, n, false));
    all.push_back(raw(raw_path, n, true));
    all.push_back(engine_case(table_path, n, Setup::shared));
    all.push_back(engine_case(table_path, n, Setup::file_lock));
    all.push_back(engine_case(table_path, n, Setup::exclusive));

    std::printf("\n%-36s %12s %9s %12s %9s %10s %10s %10s\n", "", "append rec/s", "MB/s", "skip rec/s", "MB/s",
                "writes", "reads", "locks");
    for (const Figures &f : all) {
        if (!f.ok) {
            std::printf("%-36s failed\n", f.label.c_str());
            continue;
        }
        std::printf("%-36s %12.0f %9.1f %12.0f %9.1f %10llu %10llu %10llu\n", f.label.c_str(), n / f.append_seconds,
                    megabytes / f.append_seconds, n / f.skip_seconds, megabytes / f.skip_seconds,
                    static_cast<unsigned long long>(f.writes), static_cast<unsigned long long>(f.reads),
                    static_cast<unsigned long long>(f.locks));
    }
    bool failed = false;
    for (const Figures &f : all) failed = failed || !f.ok;
    return failed ? 1 : 0;
}
