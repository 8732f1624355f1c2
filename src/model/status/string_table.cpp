#include "model/status/string_table.h"

#include <algorithm>
#include <array>

namespace ruvo {

namespace {

// The numbers are those that errors and statuses compute with: never renumber. Texts that sound wrong
// ("occured", two blanks) are what users and scripts of the program know. 192 repeats 184: status 55 means
// what 47 does.
constexpr SStringRow kTexts[] = {
    {102, "Device returned an unspecified error"},
    {103, "Device returned an unspecified error"},
    {104, "Device returned an unspecified error"},
    {105, "Device returned an unspecified error"},
    {106, "Username not found"},
    {129, "Menu location does not exist"},
    {130, "Cell data not available"},
    {131, "Menu cell not accessible for setting mode"},
    {132, "Data rejected by device"},
    {133, "Menu cell is not settable"},
    {134, "Insufficient password privilege"},
    {135, "Setting is being changed by another interface"},
    {136, "(reply code 8)"},
    {137, "Command rejected by device"},
    {138, "Device returned an unspecified error"},
    {139, "P32LS Error - Busy Counter overflow"},
    {140, "P32LS Error - Slave rejected block transfer"},
    {141, "P32LS Error - block overflow in slave device"},
    {142, "P32LS Error - slave returned incorrect block order"},
    {143, "P32LS Error - Incorrect block footer"},
    {144, "P32LS Error - a command is already in progress"},
    {145, "P32LS Error - device is either not connected or not responding"},
    {146, "P32LS Error - internal Parlane parsing error"},
    {147, "P32LS Error - command has wrong parameters"},
    {148, "P32LS Error - cannot open port"},
    {149, "P32LS Error - communication parameters cannot be set"},
    {150, "P32LS Error - there is no opened port to close"},
    {151, "P32LS Error - data not ready"},
    {152, "P32LS Error - no port open"},
    {153, "P32LS Error - data error"},
    {154, "(com status 17)"},
    {155, "P32LS Error - Function Aborted by User"},
    {156, "P32LS Error - Disturbance Record not available"},
    {157, "P32LS Error - GetDisturbanceRecordConfiguration not yet called"},
    {158, "P32LS Error - No compressed Disturbance Record available"},
    {159, "P32LS Error - wrong or incorrect serial number"},
    {160, "P32LS Error - old address is same as new address"},
    {161, "P32LS Error - device already exists at this address"},
    {162, "P32LS Error - old address cannot be found"},
    {163, "P32LS Error - device address not changed"},
    {164, "P32LS Error - device address could not be set"},
    {165, "P32LS Error - no command in progress to abort"},
    {166, "P32LS Error - Abort already in progress"},
    {167, "P32LS Error - disturbance record number out of range"},
    {168, "P32LS Error - Cannot be sent to 255"},
    {169, "P32LS Error - Disturbance column cell reference format error"},
    {170, "P32LS Error - Disturbance channel names reply code "},
    {171, "P32LS Error - Disturbance no channels available"},
    {172, "P32LS Error - Disturbance analog offset reply code"},
    {173, "P32LS Error - Disturbance analog offset error"},
    {174, "P32LS Error - Disturbance analog scaling factor reply code"},
    {175, "P32LS Error - Disturbance analog scaling factor error"},
    {176, "P32LS Error - Disturbance analog scaling unit reply code"},
    {177, "P32LS Error - Disturbance analog skew error"},
    {178, "P32LS Error - Disturbance analog minimum error"},
    {179, "P32LS Error - Disturbance analog maximum error"},
    {180, "P32LS Error - Disturbance digital channel names exceeds 16"},
    {181, "P32LS Error - Disturbance record: ERR_NOCODE from cell YY01"},
    {182, "P32LS Error - Disturbance record: ERR_NODATA from cell YY01"},
    {183, "The modem is hanging up already. Please wait."},
    {184, "There has been an internal error. Please close the communications and reopen them. If the problem "
          "persists, try restarting the application."},
    {185, "There is no call in progress."},
    {186, "The Operating System has reported that the Telephony System has failed. This can be caused by a "
          "bad modem installation. Reinstall and try again."},
    {187,
     "The currently selected line does not exist. Please choose a different line or reinstall the modem."},
    {188, "The call cannot be established because the line is busy."},
    {189, "The specified line address is wrong. Please choose another line address."},
    {190, "Cannot make the call. The currently selected  modem is not capable. Please try choosing another "
          "modem, or reinstall it."},
    {191, "Cannot open the currently selected line. The line may be in use."},
    {192, "There has been an internal error. Please close the communications and reopen them. If the problem "
          "persists, try restarting the application."},
    {193, "There has been a Telephony internal  error. The operation is not possible with the specified line "
          "address. Please choose another address, or choose another modem."},
    {194, "The currently chosen modem is incompatible with this application. Please choose a modem belonging "
          "to the \"comm/datamodem\" class (all Operating System modems belong to this)."},
    {195, "An internal error occured in the Telephony System while dialing. Please try again. If the problem "
          "persists, please choose another modem, or reinstall the one that is currently selected."},
    {196, "There has been a Telephony internal error (timeout). Please choose a different line or reinstall "
          "the modem."},
    {197, "The chosen Country Code is wrong. Please select a valid code."},
    {198, "The Telephony System is rejecting the call attempt. Please check the Country Code, Area Code and "
          "Phone Number and try again."},
    {205, "The call attempt has timed-out. Please try again."},
    {206, "Unexpected line disconnection or other communications failure. Please try again."},
    {207, "The application has lost its call privilege (internal error). Please try again. If the problem "
          "persists, please choose another modem, or reinstall the one that is currently selected."},
    {208, "Wrong response from the Telephony Service Provider (internal error). Please try again. If the "
          "problem persists, please choose another modem, or reinstall the one that is currently selected."},
    {209, "Undefined P32LS Error"},
    {210, "P32LS Error - Device disobeys Parlane specification"},
    {211, "Decompression didn't work"},
    {212, "Missing decompression DLL"},
    {213, "Disturbance saved but not extracted"},
    {222, "Extracting event records"},
    {223, "ON "},
    {224, "OFF"},
    {225, "Step size \"%1\" should be \"1\"."},
    {226, "Max value \"%1\" > \"%2\" (the number of bits)."},
    {227, "Value \"%1\" has non-settable flags that aren't zero.\nEditable mask is \"%2\"."},
    {228, "Max value \"%1\" < min value \"%2\"."},
    {229, "Max value \"%1\" not aligned on step \"%2\" from min value \"%3\"."},
    {230, "Value \"%1\" < min value \"%2\"."},
    {231, "Value \"%1\" > max value \"%2\"."},
    {232, "Value \"%1\" not aligned on step \"%2\" from min value \"%3\"."},
    {233, "Date time:\n\"%1\"\nnot aligned on %2ms step interval."},
    {234, "Date time:\n\"%1\"\nnot aligned on %2min step interval."},
    {235, "Date time:\n\"%1\"\nnot aligned on %2 hour step interval."},
    {236, "Date time:\n\"%1\"\nnot aligned on daily interval."},
    {237, "Step size \"%1\" was negative."},
    {238, "Value \"%1\" contains characters out of range."},
    {239, "Unknown"},
    {240, "-"},
    {241, "Error during Fetch Device Values: %1\n"},
    {242, "Set Password operation: "},
    {243, "Error Connecting To Device:\n%1"},
    {244, "MV Event Extraction process: "},
    {245, "MV Event Extraction process: "},
    {246, "Failed to save event file\n%1"},
    {247, "Failed to open event file\n%1"},
    {248, "Failed to open setting file\n%1"},
    {249, "Failed to open event file\n%1"},
    {526, ""},
};

static_assert(std::is_sorted(std::begin(kTexts), std::end(kTexts),
                             [](const SStringRow& left, const SStringRow& right) {
                                 return left.id < right.id;
                             }),
              "texts are found by bisection");

} // namespace

std::span<const SStringRow> StringTable() {
    return kTexts;
}

const char* LoadStringText(unsigned id) {
    const auto* row =
        std::lower_bound(std::begin(kTexts), std::end(kTexts), id,
                         [](const SStringRow& text, unsigned wanted) { return text.id < wanted; });
    return row != std::end(kTexts) && row->id == id ? row->text : nullptr;
}

std::string_view StringTextOrEmpty(unsigned id) {
    const char* text = LoadStringText(id);
    return text != nullptr ? text : std::string_view{};
}

std::string FormatPositional(std::string_view pattern, std::initializer_list<std::string_view> arguments) {
    std::string text;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const char next = i + 1 < pattern.size() ? pattern[i + 1] : '\0';
        if (pattern[i] != '%' || (next != '%' && (next < '1' || next > '9'))) {
            text += pattern[i];
            continue;
        }
        ++i;
        if (next == '%') {
            text += '%';
            continue;
        }
        const auto index = static_cast<std::size_t>(next - '1');
        if (index < arguments.size()) {
            text += arguments.begin()[index];
        }
    }
    return text;
}

} // namespace ruvo
