/// @file
/// The parameter stream's records, written by the CgFX parameter set and read back by
/// the parameter sets of both implementations:
///
///     int name count, then each name as a string;
///     int value count, then per value: int type code, int token, and its content:
///         1       one float
///         2, 5, 6 four floats, whatever the colour's component count
///         4       a reference to an image in the stream's resource container
///
/// The token is 32 bits of the writer's effect handle; it only names a parameter while
/// that effect lives, so readers read past it and never turn it into a handle. Texture
/// images travel in the stream's QorResourceZPKContainer and come back as files cached
/// under "QorTemp"\ZPKResources (or as generated pixel images).
#pragma once

#include "QorSystem/QorString.h"

#include <cstdlib>
#include <memory>
#include <vector>

class QorStreamer;

/// Receives the values ReadValues finds, in stream order, each with the token its record
/// carried.
class QorShaderValueRecordSink
{
public:
    virtual ~QorShaderValueRecordSink() = default;
    virtual void OnFloat(int token, float value) = 0;
    /// `type` is 2, 5 or 6; the four components as stored.
    virtual void OnColor(int token, int type, const float* components) = 0;
    /// The texture's file name: the cached file's path, or the image's name when it is
    /// procedural or nothing can be cached. The registry already holds one reference of
    /// it, which the value made from it takes over. Null for a texture stored without its
    /// image: it keeps its place with no file, which registers nothing.
    virtual void OnTexture(int token, const char* file) = 0;
    /// A record whose type code names no kind of value: it keeps its place, empty, so
    /// that the values after it stay beside their names.
    virtual void OnEmpty() = 0;
};

namespace QorShaderValueRecords {

struct FreeText
{
    void operator()(char* text) const { std::free(text); }
};
/// A name read from a stream, a _strdup copy (null for a null string).
using Name = std::unique_ptr<char, FreeText>;

void WriteNames(QorStreamer& streamer, const char* const* names, int count);
/// Reads the names. False, and `names` untouched, when the count is negative or larger
/// than the remaining bytes could hold, or when the stream runs out among the names.
bool ReadNames(QorStreamer& streamer, std::vector<Name>& names);

/// The value count that precedes the records.
void WriteCount(QorStreamer& streamer, int count);

/// A float or colour value's token and content, without its type code (the record of a
/// value on its own).
void WriteFloat(QorStreamer& streamer, int token, float value);
void WriteColor(QorStreamer& streamer, int token, const float* components);
/// False when the stream ran out (the outputs are then zero).
bool ReadFloat(QorStreamer& streamer, int& token, float& value);
bool ReadColor(QorStreamer& streamer, int& token, float* components);

/// One whole value record of the set's stream: type code, token and content. A texture
/// hands the image of `file` to the stream's container (nothing without a container).
void WriteRecord(QorStreamer& streamer, int type, int token, const float* numbers, const char* file);

/// Reads the value count and the records after the names, giving each value to the
/// sink, one call per record, so that the n-th value stays beside the n-th name: a
/// record of an unknown type code is an empty place, a texture whose image the
/// container cannot give a texture without a file. Stops at the first record the stream
/// cannot hold.
void ReadValues(QorStreamer& streamer, QorShaderValueRecordSink& sink);

} // namespace QorShaderValueRecords
