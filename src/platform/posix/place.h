// A file's place: a name in an open folder, found in a way that other users cannot redirect.
#pragma once

#include <cstdint>
#include <string>
#include <sys/stat.h>
#include <sys/types.h>
#include <utility>

namespace ruvo {

/// An open file or folder.
class CDescriptor {
public:
    explicit CDescriptor(int descriptor = -1) : m_descriptor(descriptor) {}
    CDescriptor(CDescriptor&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
    CDescriptor& operator=(CDescriptor&& other) noexcept {
        std::swap(m_descriptor, other.m_descriptor);
        return *this;
    }
    CDescriptor(const CDescriptor&) = delete;
    CDescriptor& operator=(const CDescriptor&) = delete;
    ~CDescriptor();

    bool IsOpen() const { return m_descriptor != -1; }
    int Get() const { return m_descriptor; }
    int Release() { return std::exchange(m_descriptor, -1); }

private:
    int m_descriptor;
};

/// A name in a folder. The folder stays open, so that it is the same one in every step.
struct SPlace {
    CDescriptor folder;
    std::string folderPath; ///< with its separator
    std::string name;

    SPlace() = default;
    /// The place that a path names, its links followed by the system, but for one of the last name.
    explicit SPlace(const std::string& native);
    /// The same, but the folder itself must not be a link; if it is, `folder` is not open (errno says why).
    static SPlace InPlainFolder(const std::string& native);

    /// Never follows a link of that name, and never waits (as the opening of a pipe would).
    CDescriptor Open(int flags, mode_t mode = 0) const;
    CDescriptor OpenFolder() const;
    bool Examine(struct stat& status) const;
    /// Whether the name still leads to that open file.
    bool IsSameFile(const CDescriptor& file) const;
    void Remove() const;
    void Flush() const;
    /// Whether the name is one of the system's links to an open descriptor of a process (/dev/stdout leads to
    /// one) and that is a pipe or a device: such a link has no path to follow.
    bool IsDescriptorLink() const;
};

/// Whether what was examined belongs to the user or to root.
bool IsTrustedOwner(const struct stat& status);

/// Whose links are followed.
enum class ELinks : std::uint8_t {
    All,
    Trusted, ///< those that belong to the user or to root
};

/// Finds the place that a path leads to, through all its links; the file itself may be missing. False with
/// errno, which is ELOOP for a link that is not followed.
bool FindPlace(const std::string& native, ELinks links, SPlace& place);

} // namespace ruvo
