// One visit of a site, from its environment to its exit status.
#pragma once

#include "tools/ini/site_places.h"
#include "tools/visit/run_outcome.h"
#include "tools/visit/visit_control.h"
#include "tools/visit/visit_output.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace ruvo {

/// The extractor and this program, side by side in one folder, and how a site's INI file is given to them.
[[nodiscard]] SChildProgram ExtractorFor(const std::string& iniPath);
[[nodiscard]] SChildProgram CompanionFor(std::vector<std::string> arguments);

/// Further attempts to visit relays from which no answer came.
struct SRetry {
    unsigned most = 0;
    std::chrono::seconds after = std::chrono::minutes(10);
};

class CVisit {
public:
    /// The INI file's full path. Sets this process's environment as that of the site's programs; what is
    /// wrong with its file is said, and makes the status.
    CVisit(std::string iniPath, CVisitOutput& output);
    CVisit(const CVisit&) = delete;
    CVisit& operator=(const CVisit&) = delete;

    /// Each returns the exit status.
    int Run(const SRetry& retry);
    int Check();
    int Test(const std::string& key);
    /// Relays reached and events stored, for people; empty when no run has left a record.
    [[nodiscard]] std::string Reached() const;

private:
    void SetEnvironment();
    /// What this program prints for the command; its exit status.
    int RunCompanion(std::vector<std::string> arguments, std::string& printed);
    [[nodiscard]] bool IsConfigurationGood(bool isShown);
    [[nodiscard]] SRunOutcome RunExtractor(const SChildProgram& program, const SSitePlaces& places);
    /// Visits these relays again; false when no further attempt is to be made.
    [[nodiscard]] bool TryAgain(const std::vector<std::string>& keys, std::chrono::seconds after);
    [[nodiscard]] int Status();
    /// The digests of all attempts.
    [[nodiscard]] std::string Digest();
    void RunProgramsAfter(int status);
    int SayIsVisited(const SVisitLine& other);
    int SayIsEnded();

    std::string m_iniPath;
    CVisitOutput& m_output;
    CVisitControl m_control;
    int m_status = static_cast<int>(EVisitStatus::Good);
    std::optional<SSitePlaces> m_places;
    std::vector<SRunOutcome> m_attempts;
};

} // namespace ruvo
