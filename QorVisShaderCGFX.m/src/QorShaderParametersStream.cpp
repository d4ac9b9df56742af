// The parameter set's stream: names and values in the shared record layout, with the
// images of texture values carried by the stream's resource container.
#include "QorShaderParameters.h"

#include "QorShaderValueColor.h"
#include "QorShaderValueFloat.h"
#include "QorShaderValueString.h"

#include "QorVisShaderShared/QorShaderTextureBookkeeping.h"
#include "QorVisShaderShared/QorShaderValueRecords.h"

#include "QorVisShaders/QorShaderValueType.h"

#include <cstdlib>
#include <memory>
#include <new>

void QorShaderParameters::Stream(QorStreamer& streamer)
{
    m_names.Stream(streamer);
    // Null and unknown entries are counted but write nothing, as the framework's readers
    // expect of this record.
    QorShaderValueRecords::WriteCount(streamer, static_cast<int>(m_values.size()));
    for (QorIShaderValue* value : m_values) {
        if (!value)
            continue;
        int type = 0;
        value->GetType(&type);
        // Components beyond the count are 0, so a colour writes four floats whatever its count.
        float numbers[4] = {};
        char* file = nullptr;
        if (type == QorValueTexture)
            value->Get(&file);
        else if (type == QorValueFloat || QorIsColorType(type))
            value->Get(numbers);
        QorShaderValueRecords::WriteRecord(streamer, type, static_cast<QorShaderValue*>(value)->GetParameterToken(),
                                           numbers, file);
    }
}

void QorShaderParameters::UnStream(QorStreamer& streamer)
{
    // A name list that cannot be read leaves the set as it was.
    if (!m_names.UnStream(streamer))
        return;
    // Values already in the set stay; read ones follow them.
    QorShaderValueCollector<QorIShaderValue, QorShaderValueFloat, QorShaderValueColor, QorShaderValueString> collector;
    QorShaderValueRecords::ReadValues(streamer, collector);
    for (QorIShaderValue* value : collector.values)
        AppendValue(value);
}
