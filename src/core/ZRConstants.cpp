// Gives the exported words their texts.
#include "core/ZRConstants.h"

#define ZR_WORD(constant, text) const char constant[] = text;
#include "core/Vocabulary.def"
