#pragma once

#include <QByteArray>
#include <QMetaType>
#include <QString>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string_view>
#include <vector>

#include "model/ModifierKey.h"

namespace gf {

// An unordered set of modifier keys, such as the keys to hold for a move. Held as a bit per table
// row so that the per-event subset test neither allocates nor touches shared state. It only ever
// holds keys that X reports: fn, which a set stored by another build may name, is left out.
class ModifierKeySet {
  public:
    ModifierKeySet() = default;
    ModifierKeySet(std::initializer_list<ModifierKey> keys);

    // The members in table order, which is how every view lists them.
    std::vector<ModifierKey> keys() const;
    bool contains(const ModifierKey& key) const;
    bool contains(std::string_view name) const;
    void insert(const ModifierKey& key);
    void remove(const ModifierKey& key);
    bool isEmpty() const;

    // True when every member's eventFlag is set in `flags`; other bits are ignored, so extra held
    // modifiers do not spoil a match. The empty set matches everything: callers decide what an
    // empty set means for them.
    bool matches(std::uint64_t flags) const;

    // {"keys":[{"name":"control"},{"name":"command"}]}, compact, members in table order.
    QByteArray toJson() const;

    // Accepts the members in any order and ignores repeats and unknown JSON members; "fn" is
    // read and left out, so such a set still loads and works with its other keys. Fails as a
    // whole on an unknown key name ("Unknown modifier key: <name>"), a missing member or a member
    // of the wrong type; `error`, when given, receives the description.
    static std::optional<ModifierKeySet> fromJson(const QByteArray& json, QString* error = nullptr);

    friend bool operator==(const ModifierKeySet&, const ModifierKeySet&) = default;

  private:
    static std::optional<std::uint8_t> bitOf(std::string_view name);

    std::uint8_t bits_ = 0;
};

}  // namespace gf

Q_DECLARE_METATYPE(gf::ModifierKeySet)
