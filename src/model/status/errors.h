// What can go wrong in the relay data model: error objects, collected in the caller's list. Their texts come
// from the string table: message M and log text M + 1; one that is missing or begins with "-" means
// none.
#pragma once

#include "model/values/owned_pointers.h"

#include <cstdint>
#include <memory>
#include <string>

namespace ruvo {

class IError {
public:
    virtual ~IError() = default;
    virtual bool HasLog() const = 0;
    virtual bool HasMessage() const = 0;
    /// The longer text, for a log.
    virtual void GetLogText(std::string& text) const = 0;
    /// The short text, for the user.
    virtual void GetMessageText(std::string& text) const = 0;
    /// The status value that caused the error; 0 when there is none.
    virtual std::uint32_t GetStatusCode() const { return 0; }
    virtual std::unique_ptr<IError> Clone() const = 0;

protected:
    IError() = default;
    IError(const IError&) = default;
    IError& operator=(const IError&) = default;
};

using CErrorList = COwnedPtrList<IError>;

/// Appends the error at the end of the list, which owns it from then on.
void AddError(CErrorList& errors, std::unique_ptr<IError> error);

/// What is wrong with a cell's value or limits (messages 225 to 239), with up to three arguments.
class CCellError final : public IError {
public:
    explicit CCellError(unsigned messageId, std::string argument1 = {}, std::string argument2 = {},
                        std::string argument3 = {});

    bool HasLog() const override;
    bool HasMessage() const override;
    void GetLogText(std::string& text) const override;
    void GetMessageText(std::string& text) const override;
    std::unique_ptr<IError> Clone() const override;

    unsigned GetMessageId() const { return m_messageId; }

private:
    unsigned m_messageId;
    std::string m_argument1;
    std::string m_argument2;
    std::string m_argument3;
};

/// A damaged event block: code 0, an item passes the end; 3, a bad event code; 4, no time stamp.
class CEventError final : public IError {
public:
    explicit CEventError(unsigned code) : m_code(code) {}

    bool HasLog() const override;
    bool HasMessage() const override;
    void GetLogText(std::string& text) const override;
    void GetMessageText(std::string& text) const override;
    std::unique_ptr<IError> Clone() const override;

    unsigned GetCode() const { return m_code; }

private:
    unsigned MessageId() const { return 240 + 2 * m_code; }

    unsigned m_code;
};

/// A failed file operation. The detail is the system's text, or one of the string table.
class CFileError final : public IError {
public:
    CFileError(std::string fileName, int cause, std::string systemText, unsigned messageId);
    CFileError(unsigned detailId, unsigned messageId);

    bool HasLog() const override;
    bool HasMessage() const override;
    void GetLogText(std::string& text) const override;
    void GetMessageText(std::string& text) const override;
    std::unique_ptr<IError> Clone() const override;

    const std::string& GetFileName() const { return m_fileName; }
    int GetCause() const { return m_cause; }
    const std::string& GetDetail() const { return m_detail; }

private:
    std::string m_fileName;
    int m_cause = 0;
    std::string m_detail;
    unsigned m_messageId;
};

/// The code of a relay error that has none.
inline constexpr std::uint32_t kNoErrorCode = 0xFFFFFFFF;

/// A request that the relay or the comms server did not grant.
class CRelayError final : public IError {
public:
    /// `code` is shown in the detail text unless it is kNoErrorCode; `statusMessageId` is the text of the
    /// status.
    CRelayError(unsigned messageId, unsigned prefixId, std::uint32_t code, unsigned statusMessageId,
                std::uint32_t status);

    bool HasLog() const override;
    bool HasMessage() const override;
    void GetLogText(std::string& text) const override;
    void GetMessageText(std::string& text) const override;
    std::uint32_t GetStatusCode() const override { return m_status; }
    std::unique_ptr<IError> Clone() const override;

    /// Prefix, code and status text in one.
    std::string GetDetail() const;

private:
    unsigned m_messageId;
    unsigned m_prefixId;
    std::uint32_t m_code;
    unsigned m_statusMessageId;
    std::uint32_t m_status;
};

} // namespace ruvo
