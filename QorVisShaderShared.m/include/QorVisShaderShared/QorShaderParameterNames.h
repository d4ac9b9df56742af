/// @file
/// The parameter names of a parameter set, in the order the effect found its parameters:
/// parameter index i (from 1) names entry i-1; index 0 is the "Technique" pseudo-parameter.
/// Each name is the set's own heap copy; the array starts with room for 20 and grows by 10.
#pragma once

#include "QorVisShaderShared/QorShaderValueRecords.h"

#include <vector>

class QorShaderParameterNames
{
public:
    QorShaderParameterNames();
    /// Copies every name, into an array of exactly that many entries.
    QorShaderParameterNames(const QorShaderParameterNames& other);
    QorShaderParameterNames& operator=(const QorShaderParameterNames&) = delete;
    ~QorShaderParameterNames();

    int Count() const { return m_count; }
    /// Stores a copy; its 0-based position, or -1 for null or out of memory.
    int Add(const char* name);
    /// The parameter index (from 1) of the first entry equal to `name`, byte for byte;
    /// -1 for null or none.
    int IndexOf(const char* name) const;
    /// "Technique" for 0; null out of range; else the name (which may be null).
    const char* At(int index) const;
    /// Writes the names record of the parameter stream.
    void Stream(QorStreamer& streamer) const;
    /// Reads a names record in place of the held names; false, with the names kept, when
    /// the stream cannot hold one.
    bool UnStream(QorStreamer& streamer);

private:
    void Free();

    char** m_names = nullptr; // C heap array of _strdup'd names (entries may be null)
    int m_count = 0;
    int m_capacity = 0;
};
