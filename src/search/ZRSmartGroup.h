// Groups whose members are not stored but found.
#pragma once

#include "core/ZRGroup.h"

/// A group whose members are whatever matches its search element.
class ZR_EXPORT ZRSmartGroup : public ZRGroup {
public:
    static const ZRRecordClass recordClassDescription;
    const ZRRecordClass& recordClass() const override { return recordClassDescription; }

protected:
    ZRSmartGroup() = default;

private:
    friend struct ZRRecordClasses;
};
