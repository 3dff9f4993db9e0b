#include "platform/x11/DesktopEntryIndex.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <set>
#include <sstream>

namespace gf {

namespace {

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

bool equalIgnoringCase(const std::string& a, const std::string& b) {
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [](unsigned char x, unsigned char y) {
               return std::tolower(x) == std::tolower(y);
           });
}

// The locale names to look for in "Name[...]" keys, most specific first:
// "de_DE.UTF-8@euro" gives de_DE@euro, de_DE, de@euro, de.
std::vector<std::string> localeCandidates() {
    std::string locale;
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        locale = environment(variable);
        if (!locale.empty()) {
            break;
        }
    }
    if (locale.empty() || locale == "C" || locale == "POSIX") {
        return {};
    }
    std::string modifier;
    if (const auto at = locale.find('@'); at != std::string::npos) {
        modifier = locale.substr(at);
        locale.resize(at);
    }
    if (const auto dot = locale.find('.'); dot != std::string::npos) {
        locale.resize(dot);
    }
    std::string language = locale.substr(0, locale.find('_'));
    std::vector<std::string> candidates;
    if (!modifier.empty()) {
        candidates.push_back(locale + modifier);
    }
    candidates.push_back(locale);
    if (language != locale) {
        if (!modifier.empty()) {
            candidates.push_back(language + modifier);
        }
        candidates.push_back(language);
    }
    return candidates;
}

std::string trimmed(const std::string& text) {
    const auto begin = text.find_first_not_of(" \t\r");
    if (begin == std::string::npos) {
        return {};
    }
    const auto end = text.find_last_not_of(" \t\r");
    return text.substr(begin, end - begin + 1);
}

// Reads the [Desktop Entry] group; nullopt for anything but a visible application.
std::optional<DesktopEntry> parseEntry(const std::filesystem::path& file,
                                       const std::vector<std::string>& locales) {
    std::ifstream stream(file);
    if (!stream) {
        return std::nullopt;
    }
    DesktopEntry entry;
    entry.id = file.stem().string();
    std::string type;
    bool hidden = false;
    std::size_t nameRank = locales.size() + 1;  // lower is better; plain "Name" ranks last
    bool inMainGroup = false;
    std::string line;
    while (std::getline(stream, line)) {
        line = trimmed(line);
        if (line.empty() || line.front() == '#') {
            continue;
        }
        if (line.front() == '[') {
            inMainGroup = line == "[Desktop Entry]";
            continue;
        }
        if (!inMainGroup) {
            continue;
        }
        const auto equals = line.find('=');
        if (equals == std::string::npos) {
            continue;
        }
        const std::string key = trimmed(line.substr(0, equals));
        const std::string value = trimmed(line.substr(equals + 1));
        if (key == "Type") {
            type = value;
        } else if (key == "Hidden") {
            hidden = value == "true";
        } else if (key == "Icon") {
            entry.icon = value;
        } else if (key == "StartupWMClass") {
            entry.startupWmClass = value;
        } else if (key == "Name" && nameRank > locales.size()) {
            entry.name = value;
            nameRank = locales.size();
        } else if (key.starts_with("Name[") && key.back() == ']') {
            const std::string locale = key.substr(5, key.size() - 6);
            const auto found = std::find(locales.begin(), locales.end(), locale);
            const auto rank = static_cast<std::size_t>(found - locales.begin());
            if (found != locales.end() && rank < nameRank) {
                entry.name = value;
                nameRank = rank;
            }
        }
    }
    if (type != "Application" || hidden) {
        return std::nullopt;
    }
    return entry;
}

}  // namespace

std::vector<std::filesystem::path> DesktopEntryIndex::standardDirectories() {
    std::vector<std::filesystem::path> directories;
    std::string dataHome = environment("XDG_DATA_HOME");
    if (dataHome.empty() && !environment("HOME").empty()) {
        dataHome = environment("HOME") + "/.local/share";
    }
    if (!dataHome.empty()) {
        directories.emplace_back(std::filesystem::path(dataHome) / "applications");
    }
    std::string dataDirs = environment("XDG_DATA_DIRS");
    if (dataDirs.empty()) {
        dataDirs = "/usr/local/share:/usr/share";
    }
    std::stringstream list(dataDirs);
    std::string directory;
    while (std::getline(list, directory, ':')) {
        if (!directory.empty()) {
            directories.emplace_back(std::filesystem::path(directory) / "applications");
        }
    }
    return directories;
}

DesktopEntryIndex DesktopEntryIndex::load(const std::vector<std::filesystem::path>& directories) {
    DesktopEntryIndex index;
    const std::vector<std::string> locales = localeCandidates();
    std::set<std::string> seenIds;
    for (const std::filesystem::path& directory : directories) {
        std::error_code error;
        std::filesystem::recursive_directory_iterator it(
            directory, std::filesystem::directory_options::skip_permission_denied, error);
        if (error) {
            continue;  // a missing directory is normal
        }
        std::vector<std::filesystem::path> files;
        for (; it != std::filesystem::recursive_directory_iterator(); it.increment(error)) {
            if (error) {
                break;
            }
            if (it->path().extension() == ".desktop" && it->is_regular_file(error)) {
                files.push_back(it->path());
            }
        }
        std::sort(files.begin(), files.end());
        for (const std::filesystem::path& file : files) {
            // Entries in subdirectories get ids with '-' for '/'; an earlier
            // directory's entry hides a later one with the same id.
            std::string id =
                std::filesystem::relative(file, directory, error).replace_extension().string();
            std::replace(id.begin(), id.end(), '/', '-');
            if (!seenIds.insert(id).second) {
                continue;
            }
            if (auto entry = parseEntry(file, locales)) {
                index.entries_.push_back(std::move(*entry));
            }
        }
    }
    return index;
}

std::optional<DesktopEntry> DesktopEntryIndex::find(const std::string& identifier) const {
    if (identifier.empty()) {
        return std::nullopt;
    }
    for (const DesktopEntry& entry : entries_) {
        if (equalIgnoringCase(entry.startupWmClass, identifier)) {
            return entry;
        }
    }
    for (const DesktopEntry& entry : entries_) {
        if (equalIgnoringCase(entry.id, identifier)) {
            return entry;
        }
    }
    return std::nullopt;
}

}  // namespace gf
