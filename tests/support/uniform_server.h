// A comms server whose operations all end in one place: what tests and benchmarks put behind the seam.
#pragma once

#include "link/seam/server_connection.h"

#include <initializer_list>

namespace ruvo::test {

class CUniformServer : public IP32ls {
public:
    using Inputs = std::initializer_list<const Variant*>;
    using Outputs = std::initializer_list<Variant*>;
    using Com = EComResult;

    /// Answers an operation that is called once.
    virtual EComResult Do(const char* name, Inputs inputs, Outputs outputs, Variant& status) = 0;
    /// Answers the start of an operation that is fetched later, and the fetching of the last one started;
    /// each is named after its own slot.
    virtual EComResult Start(const char* name, Inputs inputs, Variant& status) = 0;
    virtual EComResult Fetch(const char* name, Outputs outputs, Variant& status) = 0;

    Com OpenPort(In a, In b, Out s) override { return Do("OpenPort", {&a, &b}, {}, s); }
    Com ClosePort(Out s) override { return Do("ClosePort", {}, {}, s); }
    Com SetTransactionValues(In a, In b, In c, In d, In e, In f, In g, Out s) override {
        return Do("SetTransactionValues", {&a, &b, &c, &d, &e, &f, &g}, {}, s);
    }
    Com StartGetColumnHeadings(In a, Out s) override { return Start("GetColumnHeadings", {&a}, s); }
    Com FetchColumnHeadings(Out x, Out y, Out s) override {
        return Fetch("FetchColumnHeadings", {&x, &y}, s);
    }
    Com StartGetColumnText(In a, In b, Out s) override { return Start("GetColumnText", {&a, &b}, s); }
    Com FetchColumnText(Out x, Out y, Out s) override { return Fetch("FetchColumnText", {&x, &y}, s); }
    Com StartGetColumnValues(In a, In b, Out s) override { return Start("GetColumnValues", {&a, &b}, s); }
    Com FetchColumnValues(Out x, Out y, Out s) override { return Fetch("FetchColumnValues", {&x, &y}, s); }
    Com StartGetColumnTextAndValues(In a, In b, Out s) override {
        return Start("GetColumnTextAndValues", {&a, &b}, s);
    }
    Com FetchColumnTextAndValues(Out x, Out y, Out z, Out s) override {
        return Fetch("FetchColumnTextAndValues", {&x, &y, &z}, s);
    }
    Com StartGetStrings(In a, In b, Out s) override { return Start("GetStrings", {&a, &b}, s); }
    Com FetchStrings(Out x, Out s) override { return Fetch("FetchStrings", {&x}, s); }
    Com GetText(In a, In b, Out x, Out s) override { return Do("GetText", {&a, &b}, {&x}, s); }
    Com GetValue(In a, In b, Out x, Out y, Out z, Out s) override {
        return Do("GetValue", {&a, &b}, {&x, &y, &z}, s);
    }
    Com GetValues(In a, In b, Out x, Out s) override { return Do("GetValues", {&a, &b}, {&x}, s); }
    Com GetSettingLimits(In a, In b, Out x, Out s) override {
        return Do("GetSettingLimits", {&a, &b}, {&x}, s);
    }
    Com StartGetColumnSettingLimits(In a, In b, Out s) override {
        return Start("GetColumnSettingLimits", {&a, &b}, s);
    }
    Com FetchColumnSettingLimits(Out x, Out y, Out s) override {
        return Fetch("FetchColumnSettingLimits", {&x, &y}, s);
    }
    Com ChangeSetting(In a, In b, In c, Out s) override { return Do("ChangeSetting", {&a, &b, &c}, {}, s); }
    Com ResetCell(In a, In b, Out s) override { return Do("ResetCell", {&a, &b}, {}, s); }
    Com SetValue(In a, In b, In c, Out s) override { return Do("SetValue", {&a, &b, &c}, {}, s); }
    Com SetBlockedValue(In a, In b, In c, Out s) override {
        return Do("SetBlockedValue", {&a, &b, &c}, {}, s);
    }
    Com GetEvent(In a, Out x, Out y, Out z, Out s) override { return Do("GetEvent", {&a}, {&x, &y, &z}, s); }
    Com TestAvailableDisturbanceRecord(In a, Out x, Out s) override {
        return Do("TestAvailableDisturbanceRecord", {&a}, {&x}, s);
    }
    Com StartGetCompressDisturbanceRecord(In a, In b, Out s) override {
        return Start("GetCompressDisturbanceRecord", {&a, &b}, s);
    }
    Com FetchCompressDisturbanceRecord(Out x, Out s) override {
        return Fetch("FetchCompressDisturbanceRecord", {&x}, s);
    }
    Com StartGetDisturbanceRecordConfiguration(In a, In b, Out s) override {
        return Start("GetDisturbanceRecordConfiguration", {&a, &b}, s);
    }
    Com StartGetDisturbanceRecordValues(In a, Out s) override {
        return Start("GetDisturbanceRecordValues", {&a}, s);
    }
    Com FetchDisturbanceRecordValues(Out x, Out y, Out s) override {
        return Fetch("FetchDisturbanceRecordValues", {&x, &y}, s);
    }
    Com SetRealTime(In a, In b, Out s) override { return Do("SetRealTime", {&a, &b}, {}, s); }
    Com ChangeDeviceAddress(In a, In b, In c, Out s) override {
        return Do("ChangeDeviceAddress", {&a, &b, &c}, {}, s);
    }
    Com SelectSettingGroup(In a, In b, Out s) override { return Do("SelectSettingGroup", {&a, &b}, {}, s); }
    Com GetDeviceStatus(In a, Out x, Out s) override { return Do("GetDeviceStatus", {&a}, {&x}, s); }
    Com Abort(Out s) override { return Do("Abort", {}, {}, s); }
    Com FetchDisturbanceRecordConfiguration(Out w, Out x, Out y, Out z, Out s) override {
        return Fetch("FetchDisturbanceRecordConfiguration", {&w, &x, &y, &z}, s);
    }
    Com ModemConnect(In a, In b, In c, In d, In e, In f, Out s) override {
        return Start("ModemConnect", {&a, &b, &c, &d, &e, &f}, s);
    }
    Com ModemHangUp(Out s) override { return Do("ModemHangUp", {}, {}, s); }

protected:
    ~CUniformServer() = default;
};

} // namespace ruvo::test
