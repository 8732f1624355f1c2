// Both readers bear one name, since a program has one of them. Here, and nowhere else, the text reader goes
// by another, so that one program can ask both.
#define CProfileReader CProfileTextReader
#include "platform/posix/profile.cpp"
#undef CProfileReader

#include "windows/text_reader.h"

namespace ruvo::test {

STextReader ReadAsText(const std::string& path) {
    const auto reader = std::make_shared<const CProfileTextReader>(path);
    return {std::bind_front(&CProfileTextReader::ReadString, reader),
            std::bind_front(&CProfileTextReader::SectionNames, reader)};
}

} // namespace ruvo::test
