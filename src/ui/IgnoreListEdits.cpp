#include "ui/IgnoreListEdits.h"

#include <QList>
#include <QString>
#include <algorithm>
#include <optional>

namespace gf {

namespace {

bool hasIdentifier(const RunningApplication& application) {
    return application.identifier.has_value() && !application.identifier->empty();
}

std::optional<std::string> nameOf(const RunningApplication& application) {
    if (application.displayName.has_value() && !application.displayName->empty()) {
        return application.displayName;
    }
    return std::nullopt;
}

// Whole code points, so characters outside the basic plane do not sort by their surrogates.
QList<uint> sortKeyOf(const RunningApplication& application) {
    const QString name = QString::fromStdString(application.displayName.value_or(std::string()));
    return name.normalized(QString::NormalizationForm_C).toUcs4();
}

}  // namespace

std::vector<RunningApplication> ignoreCandidates(std::vector<RunningApplication> running) {
    std::vector<std::pair<QList<uint>, RunningApplication>> keyed;
    for (RunningApplication& application : running) {
        if (application.isRegular && hasIdentifier(application)) {
            keyed.emplace_back(sortKeyOf(application), std::move(application));
        }
    }
    std::stable_sort(keyed.begin(), keyed.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<RunningApplication> candidates;
    candidates.reserve(keyed.size());
    for (auto& [key, application] : keyed) {
        candidates.push_back(std::move(application));
    }
    return candidates;
}

std::vector<IgnoreListEntry> addingToIgnoreList(std::vector<IgnoreListEntry> list,
                                                const RunningApplication& application) {
    if (!hasIdentifier(application)) {
        return list;
    }
    const std::string& identifier = *application.identifier;
    const bool present = std::any_of(list.begin(), list.end(), [&](const IgnoreListEntry& entry) {
        return entry.bundleIdentifier == identifier;
    });
    if (!present) {
        list.push_back({identifier, nameOf(application).value_or(identifier)});
    }
    return list;
}

std::vector<IgnoreListEntry> removingFromIgnoreList(std::vector<IgnoreListEntry> list,
                                                    const std::string& bundleIdentifier) {
    std::erase_if(list, [&](const IgnoreListEntry& entry) {
        return entry.bundleIdentifier == bundleIdentifier;
    });
    return list;
}

}  // namespace gf
