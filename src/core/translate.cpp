#include "core/translate.h"

std::mutex& TranslationMutex()
{
    // Never destroyed: a job thread left running at exit may still translate.
    static std::mutex& mutex = *new std::mutex;
    return mutex;
}
