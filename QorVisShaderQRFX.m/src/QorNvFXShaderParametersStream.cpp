// Reading the parameter stream CgFX sets write into a GLSL-effect set, so that stored
// materials can be carried over to GLSL effects.
#include "QorVisShaders/QorNvFXShaderParameters.h"

#include "QorVisShaderShared/QorShaderParameterNames.h"
#include "QorVisShaderShared/QorShaderValueRecords.h"

#include "QorVisShaders/QorNvFXShaderValueColor.h"
#include "QorVisShaders/QorNvFXShaderValueFloat.h"
#include "QorVisShaders/QorNvFXShaderValueString.h"

void QorNvFXShaderParameters::UnStream(QorStreamer& streamer)
{
    // A name list that cannot be read leaves the set as it was.
    if (!m_names->UnStream(streamer))
        return;
    QorShaderValueCollector<QorNvFXShaderValue, QorNvFXShaderValueFloat, QorNvFXShaderValueColor,
                            QorNvFXShaderValueString>
        collector;
    QorShaderValueRecords::ReadValues(streamer, collector);
    for (QorNvFXShaderValue* value : collector.values)
        Append(value);
}
