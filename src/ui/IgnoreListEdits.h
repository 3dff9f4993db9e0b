#pragma once

#include <string>
#include <vector>

#include "model/IgnoreListEntry.h"
#include "platform/RunningApplication.h"

namespace gf {

// The running applications that can be offered for the ignore list: ordinary applications with
// an identifier, by name (a missing name counts as empty) compared code point by code point after
// canonical normalization, so case matters and the locale does not; equal names keep the order
// they came in. Nothing else is filtered: neither Glimmerfold nor applications already ignored.
std::vector<RunningApplication> ignoreCandidates(std::vector<RunningApplication> running);

// The list with `application` appended, named by its display name or else its identifier; the
// list unchanged when the application has no identifier or one already on the list.
std::vector<IgnoreListEntry> addingToIgnoreList(std::vector<IgnoreListEntry> list,
                                                const RunningApplication& application);

// The list without any entry whose identifier is `bundleIdentifier`, the rest in their order.
std::vector<IgnoreListEntry> removingFromIgnoreList(std::vector<IgnoreListEntry> list,
                                                    const std::string& bundleIdentifier);

}  // namespace gf
