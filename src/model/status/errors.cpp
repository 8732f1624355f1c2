#include "model/status/errors.h"

#include "model/status/string_table.h"

#include <cstdio>
#include <utility>

namespace ruvo {

namespace {

/// A text that is there and does not begin with "-".
bool IsPresent(unsigned id) {
    const char* text = LoadStringText(id);
    return text != nullptr && *text != '-';
}

std::string Filled(unsigned id, std::string_view detail) {
    return FormatPositional(StringTextOrEmpty(id), {detail});
}

} // namespace

void AddError(CErrorList& errors, std::unique_ptr<IError> error) {
    errors.push_back(std::move(error));
}

CCellError::CCellError(unsigned messageId, std::string argument1, std::string argument2,
                       std::string argument3)
    : m_messageId(messageId), m_argument1(std::move(argument1)), m_argument2(std::move(argument2)),
      m_argument3(std::move(argument3)) {}

bool CCellError::HasLog() const {
    return IsPresent(m_messageId + 1);
}
bool CCellError::HasMessage() const {
    return IsPresent(m_messageId);
}

void CCellError::GetLogText(std::string& text) const {
    text = FormatPositional(StringTextOrEmpty(m_messageId + 1), {m_argument1, m_argument2, m_argument3});
}

void CCellError::GetMessageText(std::string& text) const {
    text = FormatPositional(StringTextOrEmpty(m_messageId), {m_argument1, m_argument2, m_argument3});
}

std::unique_ptr<IError> CCellError::Clone() const {
    return std::make_unique<CCellError>(*this);
}

bool CEventError::HasLog() const {
    return IsPresent(MessageId() + 1);
}
bool CEventError::HasMessage() const {
    return IsPresent(MessageId());
}
void CEventError::GetLogText(std::string& text) const {
    text = StringTextOrEmpty(MessageId() + 1);
}
void CEventError::GetMessageText(std::string& text) const {
    text = StringTextOrEmpty(MessageId());
}
std::unique_ptr<IError> CEventError::Clone() const {
    return std::make_unique<CEventError>(*this);
}

CFileError::CFileError(std::string fileName, int cause, std::string systemText, unsigned messageId)
    : m_fileName(std::move(fileName)), m_cause(cause), m_detail(std::move(systemText)),
      m_messageId(messageId) {}

CFileError::CFileError(unsigned detailId, unsigned messageId)
    : m_detail(StringTextOrEmpty(detailId)), m_messageId(messageId) {}

bool CFileError::HasLog() const {
    return IsPresent(m_messageId + 1);
}
bool CFileError::HasMessage() const {
    return IsPresent(m_messageId);
}
void CFileError::GetLogText(std::string& text) const {
    text = Filled(m_messageId + 1, m_detail);
}
void CFileError::GetMessageText(std::string& text) const {
    text = Filled(m_messageId, m_detail);
}
std::unique_ptr<IError> CFileError::Clone() const {
    return std::make_unique<CFileError>(*this);
}

CRelayError::CRelayError(unsigned messageId, unsigned prefixId, std::uint32_t code, unsigned statusMessageId,
                         std::uint32_t status)
    : m_messageId(messageId), m_prefixId(prefixId), m_code(code), m_statusMessageId(statusMessageId),
      m_status(status) {}

bool CRelayError::HasLog() const {
    return IsPresent(m_messageId + 1);
}
bool CRelayError::HasMessage() const {
    return IsPresent(m_messageId);
}
void CRelayError::GetLogText(std::string& text) const {
    text = Filled(m_messageId + 1, GetDetail());
}
void CRelayError::GetMessageText(std::string& text) const {
    text = Filled(m_messageId, GetDetail());
}
std::unique_ptr<IError> CRelayError::Clone() const {
    return std::make_unique<CRelayError>(*this);
}

std::string CRelayError::GetDetail() const {
    char codeText[16] = " ";
    if (m_code != kNoErrorCode) {
        std::snprintf(codeText, sizeof(codeText), " [%04X]  ", static_cast<unsigned>(m_code));
    }
    return std::string(StringTextOrEmpty(m_prefixId)) + codeText +
           std::string(StringTextOrEmpty(m_statusMessageId));
}

} // namespace ruvo
