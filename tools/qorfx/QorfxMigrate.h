/// @file
/// Moving CgFX-era ".zpk" documents to GLSL effects: each document is read into GLSL
/// shader objects, whose stream migration loads the ".glslfx" twin of each stored effect
/// and carries the stored values over; the tool reports what was carried and what was
/// lost, and can write the migrated materials and a before/after contact sheet.
#pragma once

#include "QorfxStage.h"

#include <string>
#include <vector>

struct QorfxMigrateOptions
{
    std::string folder;  ///< -o: where the migrated materials go, one folder each; empty for none
    bool json = false;   ///< the report as JSON
    std::string preview; ///< --preview: the before/after contact sheet to write; empty for none
    QorfxRenderOptions render; ///< how the preview draws (tile size)
    bool translate = false; ///< --translate: a twin found nowhere is translated from the CgFX source the document carries
};

/// Migrates every document and reports on standard output. With `translate`, an effect
/// whose twin is found nowhere is translated from the source the document carries, the
/// migration runs against the translation, and the translation is written beside the
/// migrated material. Exit 0 when every material
/// of every document migrated with every value carried, 1 when a document could not be
/// read or a material found no effect or lost a value (or a file could not be written),
/// 2 on bad usage.
int QorfxMigrate(const std::vector<std::string>& documents, const QorfxMigrateOptions& options);
