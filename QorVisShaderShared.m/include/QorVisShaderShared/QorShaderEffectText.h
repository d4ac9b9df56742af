/// @file
/// The file name, source buffer and registry name both implementations' effects keep,
/// and their stream record (the name, then the source).
#pragma once

#include "QorSystem/QorString.h"

class QorStreamer;

namespace QorShaderEffectText {

/// Stores `name` as the file name and, when it holds a "\" or "/" after its first
/// character, the part up to and including the last one as the path.
void SetFileName(const QorString& name, QorString& fileName, QorString& path);

/// Replaces `buffer` (C heap) with a copy of `text`, or with null. A text also empties
/// the file name: the next load takes the buffer, not a file.
void SetBuffer(char*& buffer, QorString& fileName, const char* text);

/// Replaces `name` (C heap; the old one is freed) with a copy of `newName`.
void SetName(char*& name, char* newName);

/// Writes the effect record: the name, then the source.
void Stream(QorStreamer& streamer, const char* name, const char* buffer);

/// Reads the effect record; each string the stream holds (a null one does not count)
/// replaces the held one.
void UnStream(QorStreamer& streamer, char*& name, char*& buffer);

} // namespace QorShaderEffectText
