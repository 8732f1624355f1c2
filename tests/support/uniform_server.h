// A comms server whose operations all end in one place: what tests and benchmarks put behind the seam.
#pragma once

#include "link/server_connection.h"

#include <initializer_list>

namespace ruvo::test {

class CUniformServer : public IP32ls {
public:
    using Inputs = std::initializer_list<const Variant*>;
    using Outputs = std::initializer_list<Variant*>;

    /// Answers an operation that is called once.
    virtual EComResult Do(const char* name, Inputs inputs, Outputs outputs, Variant& status) = 0;
    /// Answers the start of an operation that is fetched later, and the fetching of the last one started;
    /// each is named after its own slot.
    virtual EComResult Start(const char* name, Inputs inputs, Variant& status) = 0;
    virtual EComResult Fetch(const char* name, Outputs outputs, Variant& status) = 0;

    EComResult OpenPort(In a, In b, Out status) override { return Do("OpenPort", {&a, &b}, {}, status); }
    EComResult ClosePort(Out status) override { return Do("ClosePort", {}, {}, status); }
    EComResult SetTransactionValues(In a, In b, In c, In d, In e, In f, In g, Out status) override {
        return Do("SetTransactionValues", {&a, &b, &c, &d, &e, &f, &g}, {}, status);
    }
    EComResult StartGetColumnHeadings(In a, Out status) override {
        return Start("GetColumnHeadings", {&a}, status);
    }
    EComResult FetchColumnHeadings(Out x, Out y, Out status) override {
        return Fetch("FetchColumnHeadings", {&x, &y}, status);
    }
    EComResult StartGetColumnText(In a, In b, Out status) override {
        return Start("GetColumnText", {&a, &b}, status);
    }
    EComResult FetchColumnText(Out x, Out y, Out status) override {
        return Fetch("FetchColumnText", {&x, &y}, status);
    }
    EComResult StartGetColumnValues(In a, In b, Out status) override {
        return Start("GetColumnValues", {&a, &b}, status);
    }
    EComResult FetchColumnValues(Out x, Out y, Out status) override {
        return Fetch("FetchColumnValues", {&x, &y}, status);
    }
    EComResult StartGetColumnTextAndValues(In a, In b, Out status) override {
        return Start("GetColumnTextAndValues", {&a, &b}, status);
    }
    EComResult FetchColumnTextAndValues(Out x, Out y, Out z, Out status) override {
        return Fetch("FetchColumnTextAndValues", {&x, &y, &z}, status);
    }
    EComResult StartGetStrings(In a, In b, Out status) override {
        return Start("GetStrings", {&a, &b}, status);
    }
    EComResult FetchStrings(Out x, Out status) override { return Fetch("FetchStrings", {&x}, status); }
    EComResult GetText(In a, In b, Out x, Out status) override {
        return Do("GetText", {&a, &b}, {&x}, status);
    }
    EComResult GetValue(In a, In b, Out x, Out y, Out z, Out status) override {
        return Do("GetValue", {&a, &b}, {&x, &y, &z}, status);
    }
    EComResult GetValues(In a, In b, Out x, Out status) override {
        return Do("GetValues", {&a, &b}, {&x}, status);
    }
    EComResult GetSettingLimits(In a, In b, Out x, Out status) override {
        return Do("GetSettingLimits", {&a, &b}, {&x}, status);
    }
    EComResult StartGetColumnSettingLimits(In a, In b, Out status) override {
        return Start("GetColumnSettingLimits", {&a, &b}, status);
    }
    EComResult FetchColumnSettingLimits(Out x, Out y, Out status) override {
        return Fetch("FetchColumnSettingLimits", {&x, &y}, status);
    }
    EComResult ChangeSetting(In a, In b, In c, Out status) override {
        return Do("ChangeSetting", {&a, &b, &c}, {}, status);
    }
    EComResult ResetCell(In a, In b, Out status) override { return Do("ResetCell", {&a, &b}, {}, status); }
    EComResult SetValue(In a, In b, In c, Out status) override {
        return Do("SetValue", {&a, &b, &c}, {}, status);
    }
    EComResult SetBlockedValue(In a, In b, In c, Out status) override {
        return Do("SetBlockedValue", {&a, &b, &c}, {}, status);
    }
    EComResult GetEvent(In a, Out x, Out y, Out z, Out status) override {
        return Do("GetEvent", {&a}, {&x, &y, &z}, status);
    }
    EComResult TestAvailableDisturbanceRecord(In a, Out x, Out status) override {
        return Do("TestAvailableDisturbanceRecord", {&a}, {&x}, status);
    }
    EComResult StartGetCompressDisturbanceRecord(In a, In b, Out status) override {
        return Start("GetCompressDisturbanceRecord", {&a, &b}, status);
    }
    EComResult FetchCompressDisturbanceRecord(Out x, Out status) override {
        return Fetch("FetchCompressDisturbanceRecord", {&x}, status);
    }
    EComResult StartGetDisturbanceRecordConfiguration(In a, In b, Out status) override {
        return Start("GetDisturbanceRecordConfiguration", {&a, &b}, status);
    }
    EComResult StartGetDisturbanceRecordValues(In a, Out status) override {
        return Start("GetDisturbanceRecordValues", {&a}, status);
    }
    EComResult FetchDisturbanceRecordValues(Out x, Out y, Out status) override {
        return Fetch("FetchDisturbanceRecordValues", {&x, &y}, status);
    }
    EComResult SetRealTime(In a, In b, Out status) override {
        return Do("SetRealTime", {&a, &b}, {}, status);
    }
    EComResult ChangeDeviceAddress(In a, In b, In c, Out status) override {
        return Do("ChangeDeviceAddress", {&a, &b, &c}, {}, status);
    }
    EComResult SelectSettingGroup(In a, In b, Out status) override {
        return Do("SelectSettingGroup", {&a, &b}, {}, status);
    }
    EComResult GetDeviceStatus(In a, Out x, Out status) override {
        return Do("GetDeviceStatus", {&a}, {&x}, status);
    }
    EComResult Abort(Out status) override { return Do("Abort", {}, {}, status); }
    EComResult FetchDisturbanceRecordConfiguration(Out w, Out x, Out y, Out z, Out status) override {
        return Fetch("FetchDisturbanceRecordConfiguration", {&w, &x, &y, &z}, status);
    }
    EComResult ModemConnect(In a, In b, In c, In d, In e, In f, Out status) override {
        return Start("ModemConnect", {&a, &b, &c, &d, &e, &f}, status);
    }
    EComResult ModemHangUp(Out status) override { return Do("ModemHangUp", {}, {}, status); }

protected:
    ~CUniformServer() = default;
};

} // namespace ruvo::test
