#pragma once

namespace gf {

// Keeps a global monitor installed; destroying the token removes it.
class MonitorToken {
public:
    virtual ~MonitorToken() = default;
};

}  // namespace gf
