#pragma once
#include <set>
#include <string>
#include <string_view>

namespace bv {

// The runtime versions and toolchains that stay because the user builds with them. Both
// read a few small files under the home folder and never write. When the default can't be
// known, everything installed is kept: the program doesn't guess.

// Installed versions in ~/.nvm/versions/node that stay, as names lower-cased and without a
// leading "v". The default comes from ~/.nvm/alias/default, following an alias that names
// another file in ~/.nvm/alias (at most a few steps); a default of "20" keeps "20.11.1".
// No alias file, or a default that matches nothing: every installed version. No versions
// folder: an empty set.
[[nodiscard]] std::set<std::string> keptNodeVersions(std::string_view home);

// How a version folder's name is compared with the kept set: lower-cased, without a
// leading "v" ("v20.11.0" and "20.11.0" are the same version).
[[nodiscard]] std::string versionKey(std::string_view name);

// Folder names in ~/.rustup/toolchains that stay: the default toolchain and every folder
// override from ~/.rustup/settings.toml, matched as the name itself or name + "-...".
// Settings missing or unreadable, no values in them, or values matching no folder: every
// folder. A toolchains folder that can't be listed counts as empty.
[[nodiscard]] std::set<std::string> keptToolchains(std::string_view home);

// The values keptToolchains matches against, read from settings text: `default_toolchain`
// outside any section, and every value of the "overrides" section. Exposed for testing.
[[nodiscard]] std::set<std::string> rustupSettingsValues(std::string_view settingsText);

} // namespace bv
