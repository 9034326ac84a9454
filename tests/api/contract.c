// Whether the header still says what programs were compiled with: it does when this compiles as plain C11.
#include "api/roster.h"

// A prototype is the type of a pointer to the function.
#define ZR_FUNCTION(result, name, arguments)                                                                 \
    _Static_assert(_Generic(&name, result(*) arguments : 1, default : 0), "the prototype of " #name);
#include "api/PlainFunctions.def"

#define ZR_ENUMERATOR(name, number) _Static_assert((name) == (number), "the number of " #name);
#include "api/Enumerators.def"

_Static_assert(sizeof(ZRIndex) == 8 && sizeof(ZRTypeID) == 4 && sizeof(ZRPropertyType) == 4
        && sizeof(ZRSearchComparison) == 4 && sizeof(ZRSearchConjunction) == 4 && kZRNotFound == INT64_MAX,
    "the sizes of numbers");
