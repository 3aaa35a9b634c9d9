// What the message family's tests share: a private configuration (nq.ini in a temporary
// folder, the example translator and its table), the message boxes as they were shown, and
// trace logs read without their line numbers.
#pragma once

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <string>
#include <vector>

#include "../platform/scoped_env.h"
#include "nq_tls20an.h"
#include "test_support.h"
#include "text_test_util.h"

namespace nqmt {

using nqtest::ScopedEnv;
using nqtt::S;
using nqtt::W;

// One message box as the library showed it.
struct Box {
    std::string title;
    std::string text;
    unsigned int style;
};

inline std::vector<Box> &boxes() {
    static std::vector<Box> shown;
    return shown;
}

inline int record_box(const char *title, const char *text, unsigned int style) {
    boxes().push_back({title ? title : "<null>", text ? text : "<null>", style});
    return 1;
}

// A scene of its own: nq.ini with the given lines in its group "GENERAL" (none: no nq.ini at
// all), the example translator's table, NQ_TRANSLATOR as given, the INI cache emptied, and
// message boxes recorded instead of shown. Everything is put back when the scene goes.
class Scene {
public:
    explicit Scene(const std::string &general = "", const std::string &table = "",
                   const char *translator = nullptr)
        : cfg_dir_(make_dir(dir_.file("cfg"))),
          cfg_("NQ_CFG_DIR", cfg_dir_),
          translator_("NQ_TRANSLATOR", translator),
          table_("NQ_EXAMPLE_TRANSLATIONS", dir_.file("translations.txt")) {
        if (!general.empty()) write_ini(general);
        nqtest::write_file(dir_.file("translations.txt"), table);
        nq_Ini_resetCache();
        boxes().clear();
        previous_box_ = nq_Platform_setMessageBoxHandler(record_box);
    }
    ~Scene() {
        nq_Platform_setMessageBoxHandler(previous_box_);
        nq_Ini_resetCache();
    }
    Scene(const Scene &) = delete;
    Scene &operator=(const Scene &) = delete;

    // Rewrites nq.ini (group "GENERAL" with these lines) and forgets the cached copy.
    void write_ini(const std::string &general) const {
        nqtest::write_file(cfg_dir_ + "/nq.ini", "[GENERAL]\n" + general);
        nq_Ini_resetCache();
    }
    const nqtest::TempDir &dir() const { return dir_; }

private:
    static std::string make_dir(const std::string &path) {
        ::mkdir(path.c_str(), 0755);
        return path;
    }

    nqtest::TempDir dir_;
    std::string cfg_dir_;
    ScopedEnv cfg_;
    ScopedEnv translator_;
    ScopedEnv table_;
    nq_MessageBoxHandler previous_box_ = nullptr;
};

// The log's lines with "(number)" after the file name taken out, so that the lines do not
// depend on where a statement stands in its source.
inline std::vector<std::string> log_lines(const std::string &path) {
    std::vector<std::string> lines;
    const std::string text = nqtest::read_file(path);
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        std::string line = text.substr(start, end - start);
        const std::size_t open = line.find(" (");
        const std::size_t close = line.find(") ", open == std::string::npos ? 0 : open);
        if (open != std::string::npos && close != std::string::npos) line.erase(open, close - open + 1);
        lines.push_back(line);
        start = end + 1;
    }
    return lines;
}

// Traces of the message family (bit 1024) at the given level go to a log of the folder for
// the life of the object.
class TraceLog {
public:
    TraceLog(const nqtest::TempDir &dir, int16_t level, uint32_t condition = 1024)
        : path_(dir.file("msg.log")) {
        nq_Diag_setOutput(2, W(path_).c_str());
        nq_Diag_setLevel(level);
        nq_Diag_setCondition(condition);
    }
    ~TraceLog() {
        nq_Diag_disable();
        nq_Diag_setOutput(1, nullptr);
    }
    TraceLog(const TraceLog &) = delete;
    TraceLog &operator=(const TraceLog &) = delete;
    // The lines so far, without line numbers; tracing stops.
    std::vector<std::string> lines() {
        nq_Diag_disable();
        return log_lines(path_);
    }

private:
    std::string path_;
};

}  // namespace nqmt
