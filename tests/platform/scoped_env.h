// An environment variable set for the life of one object and put back afterwards.
#pragma once

#include <cstdlib>
#include <string>

namespace nqtest {

class ScopedEnv {
public:
    ScopedEnv(const char *name, const char *value) : name_(name) {
        const char *old = std::getenv(name);
        had_ = old != nullptr;
        if (had_) old_ = old;
        if (value) {
            ::setenv(name, value, 1);
        } else {
            ::unsetenv(name);
        }
    }
    ScopedEnv(const char *name, const std::string &value) : ScopedEnv(name, value.c_str()) {}
    ~ScopedEnv() {
        if (had_) {
            ::setenv(name_.c_str(), old_.c_str(), 1);
        } else {
            ::unsetenv(name_.c_str());
        }
    }
    ScopedEnv(const ScopedEnv &) = delete;
    ScopedEnv &operator=(const ScopedEnv &) = delete;

private:
    std::string name_;
    bool had_ = false;
    std::string old_;
};

}  // namespace nqtest
