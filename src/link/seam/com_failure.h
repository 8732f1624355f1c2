// Why a comms server that COM starts does not come up, for people. (The words are the same on every system,
// so that they can be tested on every system.)
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ruvo {

/// One registration of the server's class.
struct SServerRegistration {
    unsigned bits = 0;      ///< of the programs for which it holds
    bool isProgram = false; ///< a program of its own, which serves those of both kinds; else a library
    std::string path;
    bool isFileThere = true;
};

/// What was tried and what came of it.
struct SComFailure {
    std::uint32_t code = 0;
    std::string_view step; ///< "creating it", and what follows
    std::string system;    ///< the system's words for the code
    std::string account;   ///< as whom this program runs
    unsigned bits = 0;     ///< of this program
    std::vector<SServerRegistration> registrations;
};

/// The code in words, what to do, and for which programs the server is registered.
std::string DescribeComFailure(const SComFailure& failure);

} // namespace ruvo
