// The marker that says "one instance is running". It dies with its process, however that ends.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace ruvo {

enum class EInstanceClaim : std::uint8_t {
    Claimed,
    AlreadyRunning,    ///< another process holds it; its window, if it has one, was brought forward
    MarkerFailed,      ///< the marker could not be made at all
    WindowClassFailed, ///< the marker is held, but the window class of that name could not be registered
};

/// The folder of the markers, or of files that are as short-lived, where no other user makes any; full path.
/// Empty when there is none.
std::string InstanceFolder();

/// Holds the marker until destroyed.
class CInstanceMarker {
public:
    CInstanceMarker();
    CInstanceMarker(const CInstanceMarker&) = delete;
    CInstanceMarker& operator=(const CInstanceMarker&) = delete;
    ~CInstanceMarker();

    EInstanceClaim Claim(const std::string& name);

private:
    struct SHandle;
    std::unique_ptr<SHandle> m_handle;
};

} // namespace ruvo
