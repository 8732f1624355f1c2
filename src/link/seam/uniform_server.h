// A server whose operations all end in one place: for who treats every call alike.
#pragma once

#include "link/seam/ip32ls.h"
#include "link/seam/operations.h"

#include <initializer_list>

namespace ruvo {

class CUniformServer : public IP32ls {
public:
    using Inputs = std::initializer_list<const Variant*>;
    using Outputs = std::initializer_list<Variant*>;
    using Com = EComResult;

    /// Answers any operation. The outputs are those before the status.
    virtual EComResult Call(EOperation operation, Inputs inputs, Outputs outputs, Variant& status) = 0;

    Com OpenPort(In a, In b, Out s) override { return Call(EOperation::OpenPort, {&a, &b}, {}, s); }
    Com ClosePort(Out s) override { return Call(EOperation::ClosePort, {}, {}, s); }
    Com SetTransactionValues(In a, In b, In c, In d, In e, In f, In g, Out s) override {
        return Call(EOperation::SetTransactionValues, {&a, &b, &c, &d, &e, &f, &g}, {}, s);
    }
    Com StartGetColumnHeadings(In a, Out s) override {
        return Call(EOperation::StartGetColumnHeadings, {&a}, {}, s);
    }
    Com FetchColumnHeadings(Out x, Out y, Out s) override {
        return Call(EOperation::FetchColumnHeadings, {}, {&x, &y}, s);
    }
    Com StartGetColumnText(In a, In b, Out s) override {
        return Call(EOperation::StartGetColumnText, {&a, &b}, {}, s);
    }
    Com FetchColumnText(Out x, Out y, Out s) override {
        return Call(EOperation::FetchColumnText, {}, {&x, &y}, s);
    }
    Com StartGetColumnValues(In a, In b, Out s) override {
        return Call(EOperation::StartGetColumnValues, {&a, &b}, {}, s);
    }
    Com FetchColumnValues(Out x, Out y, Out s) override {
        return Call(EOperation::FetchColumnValues, {}, {&x, &y}, s);
    }
    Com StartGetColumnTextAndValues(In a, In b, Out s) override {
        return Call(EOperation::StartGetColumnTextAndValues, {&a, &b}, {}, s);
    }
    Com FetchColumnTextAndValues(Out x, Out y, Out z, Out s) override {
        return Call(EOperation::FetchColumnTextAndValues, {}, {&x, &y, &z}, s);
    }
    Com StartGetStrings(In a, In b, Out s) override {
        return Call(EOperation::StartGetStrings, {&a, &b}, {}, s);
    }
    Com FetchStrings(Out x, Out s) override { return Call(EOperation::FetchStrings, {}, {&x}, s); }
    Com GetText(In a, In b, Out x, Out s) override { return Call(EOperation::GetText, {&a, &b}, {&x}, s); }
    Com GetValue(In a, In b, Out x, Out y, Out z, Out s) override {
        return Call(EOperation::GetValue, {&a, &b}, {&x, &y, &z}, s);
    }
    Com GetValues(In a, In b, Out x, Out s) override {
        return Call(EOperation::GetValues, {&a, &b}, {&x}, s);
    }
    Com GetSettingLimits(In a, In b, Out x, Out s) override {
        return Call(EOperation::GetSettingLimits, {&a, &b}, {&x}, s);
    }
    Com StartGetColumnSettingLimits(In a, In b, Out s) override {
        return Call(EOperation::StartGetColumnSettingLimits, {&a, &b}, {}, s);
    }
    Com FetchColumnSettingLimits(Out x, Out y, Out s) override {
        return Call(EOperation::FetchColumnSettingLimits, {}, {&x, &y}, s);
    }
    Com ChangeSetting(In a, In b, In c, Out s) override {
        return Call(EOperation::ChangeSetting, {&a, &b, &c}, {}, s);
    }
    Com ResetCell(In a, In b, Out s) override { return Call(EOperation::ResetCell, {&a, &b}, {}, s); }
    Com SetValue(In a, In b, In c, Out s) override { return Call(EOperation::SetValue, {&a, &b, &c}, {}, s); }
    Com SetBlockedValue(In a, In b, In c, Out s) override {
        return Call(EOperation::SetBlockedValue, {&a, &b, &c}, {}, s);
    }
    Com GetEvent(In a, Out x, Out y, Out z, Out s) override {
        return Call(EOperation::GetEvent, {&a}, {&x, &y, &z}, s);
    }
    Com TestAvailableDisturbanceRecord(In a, Out x, Out s) override {
        return Call(EOperation::TestAvailableDisturbanceRecord, {&a}, {&x}, s);
    }
    Com StartGetCompressDisturbanceRecord(In a, In b, Out s) override {
        return Call(EOperation::StartGetCompressDisturbanceRecord, {&a, &b}, {}, s);
    }
    Com FetchCompressDisturbanceRecord(Out x, Out s) override {
        return Call(EOperation::FetchCompressDisturbanceRecord, {}, {&x}, s);
    }
    Com StartGetDisturbanceRecordConfiguration(In a, In b, Out s) override {
        return Call(EOperation::StartGetDisturbanceRecordConfiguration, {&a, &b}, {}, s);
    }
    Com StartGetDisturbanceRecordValues(In a, Out s) override {
        return Call(EOperation::StartGetDisturbanceRecordValues, {&a}, {}, s);
    }
    Com FetchDisturbanceRecordValues(Out x, Out y, Out s) override {
        return Call(EOperation::FetchDisturbanceRecordValues, {}, {&x, &y}, s);
    }
    Com SetRealTime(In a, In b, Out s) override { return Call(EOperation::SetRealTime, {&a, &b}, {}, s); }
    Com ChangeDeviceAddress(In a, In b, In c, Out s) override {
        return Call(EOperation::ChangeDeviceAddress, {&a, &b, &c}, {}, s);
    }
    Com SelectSettingGroup(In a, In b, Out s) override {
        return Call(EOperation::SelectSettingGroup, {&a, &b}, {}, s);
    }
    Com GetDeviceStatus(In a, Out x, Out s) override {
        return Call(EOperation::GetDeviceStatus, {&a}, {&x}, s);
    }
    Com Abort(Out s) override { return Call(EOperation::Abort, {}, {}, s); }
    Com FetchDisturbanceRecordConfiguration(Out w, Out x, Out y, Out z, Out s) override {
        return Call(EOperation::FetchDisturbanceRecordConfiguration, {}, {&w, &x, &y, &z}, s);
    }
    Com ModemConnect(In a, In b, In c, In d, In e, In f, Out s) override {
        return Call(EOperation::ModemConnect, {&a, &b, &c, &d, &e, &f}, {}, s);
    }
    Com ModemHangUp(Out s) override { return Call(EOperation::ModemHangUp, {}, {}, s); }

protected:
    ~CUniformServer() = default;
};

} // namespace ruvo
