// The records of a command-line run's pages, fills and fountains: the
// per-control pattern files the plug-in keeps (read with the configuration,
// written with --save), values given with --set, the swatch command that
// paints one fill or fountain into an image, and the fountain libraries.
// A fill's setting (FillColorN) is kept in step with its record: the record's
// kind in the top byte, its Simple colour in the low 24 bits. Fountains have
// no setting; while FirstRun is set their controls start from the built-in
// fountains, and FirstRun is then cleared, as the plug-in does.
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

// A record for every fill and fountain control of every page, each with its
// own pattern file's path; with plan.read, a valid pattern file replaces the
// defaults (and a fill's kind and colour go into its setting: the file is the
// fill's home, as in the plug-in). Never fails: an unreadable or foreign file
// means defaults.
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

// A --set value for a fountain control: a fountain's text form (see
// 'tessarine help fountains'). The record keeps its own path.
bool SetFountain(const PageControl& control, std::string_view text, PageRecords& records,
                 std::string* expected);

// The fountain control of `key` ("Fountain", or "StyleNNNFountain" for any
// style) on the pages of `styles`, where `selected` is the current effect's
// entry; null when the key names none.
const PageControl* FindFountainControl(std::string_view key, std::span<const StyleEntry> styles,
                                       const StyleEntry* selected);

// The fill's text for 'list', exactly as --set takes it back.
std::string FillText(const FillDescriptor& fill);

// The help topics 'tessarine help fills' and 'tessarine help fountains'.
std::string FillsHelp();
std::string FountainsHelp();

// tessarine swatch FILL --size WxH -o FILE: FILL is a fill's or a fountain's
// text form, or a ".flp" pattern file of either; FILE ends in ".ppm" or ".gif".
int RunSwatch(const CliArgs& args, CliEnvironment& env);

// tessarine library [list|show N|add FOUNTAIN|remove N] [open|closed]: the
// fountain libraries the plug-in shares.
int RunLibrary(const CliArgs& args, CliEnvironment& env);

}  // namespace tess::cli
