// The INI cache against a read of the file for every value: a file of 500 groups of 20
// variables, values asked for at random, and sets written through.
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "nq_tls20an.h"

namespace {

constexpr int kGroups = 500;
constexpr int kVariables = 20;

std::u16string wide(const std::string &s) { return std::u16string(s.begin(), s.end()); }

template <typename F>
double per_call_ns(int calls, F f) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < calls; ++i) f(i);
    const auto end = std::chrono::steady_clock::now();
    return std::chrono::duration<double, std::nano>(end - start).count() / calls;
}

}  // namespace

int main() {
    char folder[] = "/tmp/nqbench-XXXXXX";
    if (!::mkdtemp(folder)) return 1;
    const std::string file = std::string(folder) + "/bench.ini";
    {
        std::ofstream out(file);
        for (int g = 0; g < kGroups; ++g) {
            out << "; group " << g << "\n[Group" << g << "]\n";
            for (int v = 0; v < kVariables; ++v) out << "Variable" << v << " = value " << g << "." << v << "\n";
            out << "\n";
        }
    }
    const std::u16string name = wide(file);
    std::mt19937 random(7);
    std::vector<std::pair<std::u16string, std::u16string>> keys;
    for (int i = 0; i < 1000; ++i) {
        keys.emplace_back(wide("GROUP" + std::to_string(random() % kGroups)),
                          wide("variable" + std::to_string(random() % kVariables)));
    }

    const auto first = std::chrono::steady_clock::now();
    nq_Ini_get(name.c_str(), u"Group0", u"Variable0");
    const double load_us =
        std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - first).count();

    const double cached = per_call_ns(200000, [&](int i) {
        const auto &k = keys[i % keys.size()];
        if (!nq_Ini_getAbsolute(name.c_str(), k.first.c_str(), k.second.c_str())) std::abort();
    });
    const double from_file = per_call_ns(200, [&](int i) {
        const auto &k = keys[i % keys.size()];
        if (!nq_Env_getWin(name.c_str(), k.first.c_str(), k.second.c_str())) std::abort();
    });
    const double set = per_call_ns(200, [&](int i) {
        const auto &k = keys[i % keys.size()];
        nq_Ini_set(name.c_str(), k.first.c_str(), k.second.c_str(), i % 2 ? u"odd" : u"even");
    });

    std::printf("INI file of %d groups x %d variables (%ju bytes)\n", kGroups, kVariables,
                static_cast<uintmax_t>(std::filesystem::file_size(file)));
    std::printf("  first read (parse and index)      %10.1f us\n", load_us);
    std::printf("  get through the cache             %10.1f ns per value\n", cached);
    std::printf("  profile read of the file          %10.1f ns per value\n", from_file);
    std::printf("  set, written through              %10.1f ns per value\n", set);
    std::filesystem::remove_all(folder);
    return 0;
}
