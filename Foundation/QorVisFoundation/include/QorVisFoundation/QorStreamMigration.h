/// @file
/// Work a document's reading leaves for its end. While a document is read, objects read
/// back may hand themselves to the migration the streamer owns (the shader library's
/// carries stored CgFX materials over to GLSL effects); QorStreamer::FinishReading runs it
/// once all of them are read.
#pragma once

class QorStreamMigration
{
public:
    virtual ~QorStreamMigration() = default;
    /// Does the migration's work; called once, after the last object is read.
    virtual void Migrate() = 0;
};
