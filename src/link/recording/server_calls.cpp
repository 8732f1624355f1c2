#include "link/recording/server_calls.h"

#include <array>
#include <type_traits>
#include <utility>

namespace ruvo {

namespace {

using Inputs = CUniformServer::Inputs;
using Outputs = CUniformServer::Outputs;
using Caller = EComResult (*)(IP32ls&, Inputs, Outputs, Variant&);

/// An operation's own parameters: inputs, outputs, and the status as the last one.
template <class... Values, std::size_t... Index>
EComResult CallWith(IP32ls& server, EComResult (IP32ls::*method)(Values...), Inputs inputs, Outputs outputs,
                    Variant& status, std::index_sequence<Index...> /*places*/) {
    constexpr std::size_t kInputs = (std::size_t{std::is_same_v<Values, const Variant&>} + ... + 0);
    constexpr std::size_t kOutputs = sizeof...(Values) - kInputs - 1;
    if (inputs.size() != kInputs || outputs.size() != kOutputs) {
        return EComResult::Failed;
    }
    const auto at = [&]<std::size_t place>() -> auto& {
        if constexpr (place < kInputs) {
            return *inputs.begin()[place];
        } else if constexpr (place < kInputs + kOutputs) {
            return *outputs.begin()[place - kInputs];
        } else {
            return status;
        }
    };
    return (server.*method)(at.template operator()<Index>()...);
}

template <class... Values>
EComResult Spread(IP32ls& server, EComResult (IP32ls::*method)(Values...), Inputs inputs, Outputs outputs,
                  Variant& status) {
    return CallWith(server, method, inputs, outputs, status, std::index_sequence_for<Values...>());
}

template <auto method>
EComResult Invoke(IP32ls& server, Inputs inputs, Outputs outputs, Variant& status) {
    return Spread(server, method, inputs, outputs, status);
}

/// In the order of EOperation.
constexpr std::array<Caller, static_cast<std::size_t>(EOperation::Last) + 1> kCallers{
    Invoke<&IP32ls::OpenPort>,
    Invoke<&IP32ls::ClosePort>,
    Invoke<&IP32ls::SetTransactionValues>,
    Invoke<&IP32ls::StartGetColumnHeadings>,
    Invoke<&IP32ls::FetchColumnHeadings>,
    Invoke<&IP32ls::StartGetColumnText>,
    Invoke<&IP32ls::FetchColumnText>,
    Invoke<&IP32ls::StartGetColumnValues>,
    Invoke<&IP32ls::FetchColumnValues>,
    Invoke<&IP32ls::StartGetColumnTextAndValues>,
    Invoke<&IP32ls::FetchColumnTextAndValues>,
    Invoke<&IP32ls::StartGetStrings>,
    Invoke<&IP32ls::FetchStrings>,
    Invoke<&IP32ls::GetText>,
    Invoke<&IP32ls::GetValue>,
    Invoke<&IP32ls::GetValues>,
    Invoke<&IP32ls::GetSettingLimits>,
    Invoke<&IP32ls::StartGetColumnSettingLimits>,
    Invoke<&IP32ls::FetchColumnSettingLimits>,
    Invoke<&IP32ls::ChangeSetting>,
    Invoke<&IP32ls::ResetCell>,
    Invoke<&IP32ls::SetValue>,
    Invoke<&IP32ls::SetBlockedValue>,
    Invoke<&IP32ls::GetEvent>,
    Invoke<&IP32ls::TestAvailableDisturbanceRecord>,
    Invoke<&IP32ls::StartGetCompressDisturbanceRecord>,
    Invoke<&IP32ls::FetchCompressDisturbanceRecord>,
    Invoke<&IP32ls::StartGetDisturbanceRecordConfiguration>,
    Invoke<&IP32ls::StartGetDisturbanceRecordValues>,
    Invoke<&IP32ls::FetchDisturbanceRecordValues>,
    Invoke<&IP32ls::SetRealTime>,
    Invoke<&IP32ls::ChangeDeviceAddress>,
    Invoke<&IP32ls::SelectSettingGroup>,
    Invoke<&IP32ls::GetDeviceStatus>,
    Invoke<&IP32ls::Abort>,
    Invoke<&IP32ls::FetchDisturbanceRecordConfiguration>,
    Invoke<&IP32ls::ModemConnect>,
    Invoke<&IP32ls::ModemHangUp>};

} // namespace

EComResult CallOperation(IP32ls& server, EOperation operation, Inputs inputs, Outputs outputs,
                         Variant& status) {
    return kCallers[static_cast<std::size_t>(operation)](server, inputs, outputs, status);
}

} // namespace ruvo
