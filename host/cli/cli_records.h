// The fills of a command-line run: the per-control pattern files the plug-in
// keeps (read with the configuration, written with --save), fill values given
// with --set, and the swatch command that paints one fill into an image.
// A fill's setting (FillColorN) is kept in step with its record: the record's
// kind in the top byte, its Simple colour in the low 24 bits.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "fills/fill_store.h"
#include "host/cli/cli.h"
#include "host/cli/cli_settings.h"
#include "shell/settings.h"
#include "styles/style.h"

namespace tess::cli {

// A record for every fill control of every page, each with its own pattern
// file's path; with plan.read, a valid pattern file replaces the defaults and
// its kind and colour go into the setting (the file is the fill's home, as in
// the plug-in). Never fails: an unreadable or foreign file means defaults.
void LoadPageRecords(const ConfigPlan& plan, Settings& settings, PageRecords& records,
                     Platform& platform, std::span<const StyleEntry> styles);

// Writes every record to its pattern file, creating the folder. On failure
// says which file could not be written.
bool SavePageRecords(const PageRecords& records, Failure* failure);

// Takes a --set value for fill control `control` of style `style_number`:
// the fill's text form (see 'tessarine help fills'), or a number for the whole
// setting as the configuration file holds it. The record keeps its own path.
bool SetFill(const PageControl& control, int config_index, std::string_view text, Settings& settings,
             FillStore& fills, std::string* expected);

// The fill's text for 'list', exactly as --set takes it back.
std::string FillText(const FillDescriptor& fill);

// The help topic 'tessarine help fills'.
std::string FillsHelp();

// tessarine swatch FILL --size WxH -o FILE: FILL is a text form or a ".flp"
// pattern file; FILE ends in ".ppm" or ".gif".
int RunSwatch(const CliArgs& args, CliEnvironment& env);

}  // namespace tess::cli
