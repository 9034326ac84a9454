// What stands in the place of a class that is gone.
#pragma once

#include "core/ZRExport.h"
#include "platform/value/Object.h"

#include <string>
#include <string_view>

/// An object of a retired class, so that old callers go on running: whatever it is asked, it answers nothing.
///
/// Ownership: as any Object.
/// Threads:   constant.
/// Errors:    none.
class ZR_EXPORT ZRDeprecatedObject final : public platform::Object {
public:
    /// Stands in for an object of `className`, and logs that the class is no longer supported.
    static platform::Ref<ZRDeprecatedObject> alloc(std::string_view className);

    /// Zero, false, empty or absent, whatever the operation and its arguments.
    template <class Answer, class... Arguments>
    Answer perform(std::string_view, Arguments&&...) const
    {
        return Answer();
    }

    const std::string& className() const { return _className; }
    std::string description() const override;

private:
    template <class T, class... Arguments>
    friend platform::Ref<T> platform::makeRef(Arguments&&...);
    explicit ZRDeprecatedObject(std::string_view className) : _className(className) { }
    ~ZRDeprecatedObject() override = default;

    const std::string _className;
};
