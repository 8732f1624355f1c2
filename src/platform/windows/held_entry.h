// An entry of a folder, held in its place.
#pragma once

#include "platform/windows/wide_text.h"

#include <string>

namespace ruvo {

/// Whether a reparse point is a link. Others (files in the cloud, compacted files) are what they look like.
inline bool IsLinkTag(DWORD tag) {
    return tag == IO_REPARSE_TAG_SYMLINK || tag == IO_REPARSE_TAG_MOUNT_POINT;
}

/// The folder of a path, without a separator at the end, which would follow a link; that of a drive's root
/// belongs to it.
inline std::string FolderOf(const std::string& path) {
    const std::size_t end = path.find_last_of("\\/");
    return end == std::string::npos ? "." : path.substr(0, end == 2 && path[1] == ':' ? 3 : end);
}

/// The entry that a path names: a link itself, not its target. While it is held, no process can rename or
/// delete it, and so put something else in its place.
class CHeldEntry {
public:
    explicit CHeldEntry(const std::string& path)
        : m_handle(CreateFileW(Wide(path).c_str(),
                               FILE_READ_DATA | FILE_READ_ATTRIBUTES, // a folder's names: alike
                               FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                               FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr)),
          m_code(m_handle == INVALID_HANDLE_VALUE ? GetLastError() : DWORD{ERROR_SUCCESS}) {
        if (m_code == ERROR_SUCCESS && GetFileInformationByHandle(m_handle, &m_entry) == FALSE) {
            m_code = GetLastError();
        }
    }
    CHeldEntry(const CHeldEntry&) = delete;
    CHeldEntry& operator=(const CHeldEntry&) = delete;
    ~CHeldEntry() {
        if (m_handle != INVALID_HANDLE_VALUE) {
            CloseHandle(m_handle);
        }
    }

    DWORD Code() const { return m_code; }
    bool IsPlain(bool folder) const {
        const bool isFolder = (m_entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        return m_code == ERROR_SUCCESS && isFolder == folder && GetFileType(m_handle) == FILE_TYPE_DISK &&
               !IsLink();
    }

private:
    bool IsLink() const {
        FILE_ATTRIBUTE_TAG_INFO tag = {};
        return (m_entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
               (GetFileInformationByHandleEx(m_handle, FileAttributeTagInfo, &tag, sizeof tag) == FALSE ||
                IsLinkTag(tag.ReparseTag));
    }

    HANDLE m_handle;
    DWORD m_code;
    BY_HANDLE_FILE_INFORMATION m_entry = {};
};

} // namespace ruvo
