// The pasteboard of a process.
#include "platform/files/Pasteboard.h"

#include "platform/run/Mutex.h"
#include "platform/run/NeverDestroyed.h"

#include <algorithm>
#include <utility>

namespace platform {

namespace {

class OwnPasteboard : public Pasteboard {
public:
    std::int64_t clearContents() override
    {
        const Lock lock(_mutex);
        _forms.clear();
        return ++_changeCount;
    }
    bool setValue(const Value& value, std::string_view type) override
    {
        const Lock lock(_mutex);
        const auto at = std::ranges::find(_forms, type, &Form::first);
        if (at == _forms.end())
            _forms.emplace_back(type, value);
        else
            at->second = value;
        return true;
    }
    Value valueForType(std::string_view type) const override
    {
        const Lock lock(_mutex);
        const auto at = std::ranges::find(_forms, type, &Form::first);
        return at == _forms.end() ? Value() : at->second;
    }
    std::vector<std::string> types() const override
    {
        const Lock lock(_mutex);
        std::vector<std::string> all;
        for (const auto& [type, value] : _forms)
            all.push_back(type);
        return all;
    }
    std::int64_t changeCount() const override
    {
        const Lock lock(_mutex);
        return _changeCount;
    }

private:
    using Form = std::pair<std::string, Value>;

    mutable Mutex _mutex;
    std::vector<Form> _forms ZR_GUARDED_BY(_mutex);
    std::int64_t _changeCount ZR_GUARDED_BY(_mutex) = 0;
};

struct General {
    Mutex mutex;
    std::shared_ptr<Pasteboard> current ZR_GUARDED_BY(mutex) = makePasteboard();
};

General& generalOne()
{
    static const NeverDestroyed<General> one;
    return *one;
}

} // namespace

std::shared_ptr<Pasteboard> makePasteboard() { return std::make_shared<OwnPasteboard>(); }

std::shared_ptr<Pasteboard> Pasteboard::general()
{
    const Lock lock(generalOne().mutex);
    return generalOne().current;
}

std::shared_ptr<Pasteboard> Pasteboard::install(std::shared_ptr<Pasteboard> pasteboard)
{
    const Lock lock(generalOne().mutex);
    return std::exchange(generalOne().current, pasteboard ? std::move(pasteboard) : makePasteboard());
}

} // namespace platform
