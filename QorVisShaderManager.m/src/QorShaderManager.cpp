#include "QorVisShaders/QorShaderManager.h"

void QorShaderManager::Init_Light_Properties(_LightsParameters& lights)
{
    for (std::uint64_t& word : lights.lightProperties)
        word = 0;
}
