#include "effect/TremoloProgram.h"

#include <cstring>

#include "engine/Parameters.h"

void loadFactoryPrograms(TremoloProgram (&programs)[kNumPrograms])
{
    for (int i = 0; i < kNumPrograms; ++i) {
        const FactoryProgram& factory = factoryProgram(i);
        forEachParameter([&](auto parameter) {
            parameterField<parameter>(programs[i]) = parameterField<parameter>(factory.settings);
        });
        std::strncpy(programs[i].name, factory.name, sizeof programs[i].name);
    }
}
