// Messages that carry errors to a user. The extraction makes none.
#pragma once

#include "model/status/errors.h"
#include "model/values/parlane_time.h"

namespace ruvo {

/// A message with the errors that led to it.
class CMessage {
public:
    CMessage() = default;
    CMessage(const CMessage&) = delete;
    CMessage& operator=(const CMessage&) = delete;
    virtual ~CMessage() = default;

    CErrorList& Errors() { return m_errors; }
    const CErrorList& Errors() const { return m_errors; }

private:
    CErrorList m_errors;
};

using CMessageList = COwnedPtrList<CMessage>;

/// A message about a disturbance record.
class CComtradeMessage final : public CMessage {
public:
    CComtradeMessage(const CParlaneIEC870& time, std::string text, int first, int second)
        : m_time(time), m_text(std::move(text)), m_first(first), m_second(second) {}

    const CParlaneIEC870& GetTime() const { return m_time; }
    const std::string& GetText() const { return m_text; }
    int GetFirst() const { return m_first; }
    int GetSecond() const { return m_second; }

private:
    CParlaneIEC870 m_time;
    std::string m_text;
    int m_first;
    int m_second;
};

} // namespace ruvo
