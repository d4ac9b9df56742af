#include "QorSystem/QorEnvironment.h"

#include <cstdlib>

const char* QorGetEnv(const char* name)
{
    return name ? std::getenv(name) : nullptr;
}

int QorSetEnv(const char* name, const char* value)
{
    if (!name || !*name)
        return -1;
    const int result = value ? setenv(name, value, 1) : unsetenv(name);
    return result == 0 ? 0 : -1;
}
