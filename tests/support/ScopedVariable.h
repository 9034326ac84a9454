// A variable of the environment for the length of a scope.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace test {

class ScopedVariable {
public:
    /// A null value unsets the variable.
    ScopedVariable(const char* name, const char* value) : _name(name)
    {
        if (const char* old = std::getenv(name))
            _old = old;
        set(value);
    }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;
    ~ScopedVariable() { set(_old ? _old->c_str() : nullptr); }

    void set(const char* value) { value ? setenv(_name, value, 1) : unsetenv(_name); }

private:
    const char* _name;
    std::optional<std::string> _old;
};

} // namespace test
