// Helpers of the engine's tests: captured message boxes, a clock that never sleeps, an engine
// that ends itself, and a current folder for the length of a test.
#pragma once

#include <unistd.h>

#include <string>
#include <vector>

#include "nq_platform.h"
#include "table_engine.h"
#include "test_support.h"

namespace enginetest {

struct Box {
    std::string title;
    std::string text;
    unsigned int style;
};

// Every box shown while the object lives, with the answer the handler gives (1: shown).
class BoxCapture {
public:
    explicit BoxCapture(int answer = 1) {
        boxes().clear();
        answer_() = answer;
        previous_ = nq_Platform_setMessageBoxHandler(&BoxCapture::handler);
    }
    ~BoxCapture() { nq_Platform_setMessageBoxHandler(previous_); }
    BoxCapture(const BoxCapture &) = delete;
    BoxCapture &operator=(const BoxCapture &) = delete;

    static std::vector<Box> &boxes() {
        static std::vector<Box> all;
        return all;
    }
    size_t count() const { return boxes().size(); }
    const Box &last() const { return boxes().back(); }

private:
    static int &answer_() {
        static int answer = 1;
        return answer;
    }
    static int handler(const char *title, const char *text, unsigned int style) {
        boxes().push_back({title ? title : "", text ? text : "", style});
        return answer_();
    }
    nq_MessageBoxHandler previous_;
};

// A clock that moves only when a wait pauses: each pause adds step seconds.
class FakeClock {
public:
    explicit FakeClock(int64_t start = 1000, int64_t step = 1) {
        now() = start;
        step_() = step;
        pauses() = 0;
        previous_clock_ = u4set_clock(&FakeClock::clock);
        previous_pause_ = u4set_pause(&FakeClock::pause);
    }
    ~FakeClock() {
        u4set_clock(previous_clock_);
        u4set_pause(previous_pause_);
    }
    FakeClock(const FakeClock &) = delete;
    FakeClock &operator=(const FakeClock &) = delete;

    static int64_t &now() {
        static int64_t value = 0;
        return value;
    }
    static int64_t &step_() {
        static int64_t value = 1;
        return value;
    }
    static int &pauses() {
        static int value = 0;
        return value;
    }
    // Called on each pause besides moving the clock, when set.
    static void (*&on_pause())() {
        static void (*hook)() = nullptr;
        return hook;
    }

private:
    static int64_t clock() { return now(); }
    static void pause() {
        ++pauses();
        now() += step_();
        if (on_pause()) on_pause()();
    }
    u4clock_fn previous_clock_;
    u4pause_fn previous_pause_;
};

// An engine with its defaults, ended and freed with the object. Reports are kept off the
// terminal unless a test captures them itself.
class Engine {
public:
    Engine() : engine_(engine4_new(1)) {}
    ~Engine() {
        if (engine_) {
            engine4_end(engine_);
            engine4_free(engine_);
        }
    }
    Engine(const Engine &) = delete;
    Engine &operator=(const Engine &) = delete;
    engine4 *get() const { return engine_; }
    engine4 *operator->() const { return engine_; }
    operator engine4 *() const { return engine_; }

private:
    engine4 *engine_;
};

// The current folder changed for the object's life.
class InFolder {
public:
    explicit InFolder(const std::string &folder) {
        char here[4096];
        if (::getcwd(here, sizeof(here))) saved_ = here;
        if (::chdir(folder.c_str()) != 0) saved_.clear();
    }
    ~InFolder() {
        if (!saved_.empty() && ::chdir(saved_.c_str()) != 0) {
        }
    }

private:
    std::string saved_;
};

// The file's bytes as a string.
inline std::string bytes_of(const std::string &path) { return nqtest::read_file(path); }

}  // namespace enginetest
