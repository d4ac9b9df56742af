// The parameter set's stream: names and values in the records' layout, with the images
// of texture values carried by the stream's resource container.
#include "QorVisShaderShared/QorMaterialParameters.h"

#include "QorVisShaderShared/QorShaderTextureBookkeeping.h"
#include "QorVisShaderShared/QorShaderValueRecords.h"

#include "QorDiagnostics/CheckFailure.h"

// Makes the values ReadValues finds as new values of the set's back end, each with no
// parameter (values read back mirror none: the records' tokens named the writer's), and
// an empty place for a record without a value; appends them to the set.
class QorMaterialValueReader final : public QorShaderValueRecordSink
{
public:
    explicit QorMaterialValueReader(QorMaterialParameters& set) : m_set(set) {}

    void OnFloat(int token, float value) override { Add(token, m_set.MakeValue(QorValueFloat, 1, nullptr, &value, nullptr)); }
    void OnColor(int token, int type, const float* components) override
    {
        Add(token, m_set.MakeValue(type, QorColorComponentCount(type), nullptr, components, nullptr));
    }
    void OnTexture(int token, const char* file) override
    {
        QorMaterialValue* value = m_set.MakeValue(QorValueTexture, 0, nullptr, nullptr, file);
        // The registry's reference for `file` is the value's; without a value it goes back.
        if (!value)
            QorShaderTextureBookkeeping::HandBack(file);
        Add(token, value);
    }
    void OnEmpty() override { m_set.Append(nullptr); }

private:
    void Add(int token, QorMaterialValue* value)
    {
        if (value)
            value->SetParameterToken(token);
        m_set.Append(value);
    }

    QorMaterialParameters& m_set;
};

void QorMaterialParameters::Stream(QorStreamer& streamer)
{
    if (m_profile.streamNotImplementedLine != 0) {
        CheckFailure__("Not implemented", m_profile.setSource, m_profile.streamNotImplementedLine);
        return;
    }
    m_names.Stream(streamer);
    // Empty places are counted but write nothing, as the framework's readers expect of
    // this record.
    QorShaderValueRecords::WriteCount(streamer, static_cast<int>(m_values.size()));
    for (QorIShaderValue* listed : m_values) {
        const auto* value = static_cast<const QorMaterialValue*>(listed);
        if (!value)
            continue;
        QorShaderValueRecords::WriteRecord(streamer, value->Type(), value->GetParameterToken(),
                                           value->Type() == QorValueTexture ? nullptr : value->Components(),
                                           value->File());
    }
}

void QorMaterialParameters::UnStream(QorStreamer& streamer)
{
    // A name list that cannot be read leaves the set as it was.
    if (!m_names.UnStream(streamer))
        return;
    QorMaterialValueReader reader(*this);
    QorShaderValueRecords::ReadValues(streamer, reader);
}
