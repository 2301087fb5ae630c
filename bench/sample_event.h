#pragma once

#include <string_view>

namespace ostrell {

// What the event service says of a crashed program.
inline constexpr std::wstring_view kSampleEvent =
    L"<Event xmlns='http://schemas.microsoft.com/win/2004/08/events/event'><System>"
    L"<Provider Name='Application Error' Guid='{a0e9b465-b939-57d7-b27d-95d8e925ff57}'/>"
    L"<EventID>1000</EventID><Version>0</Version><Level>2</Level><Task>100</Task><Opcode>0</Opcode>"
    L"<Keywords>0x8000000000000000</Keywords>"
    L"<TimeCreated SystemTime='2026-11-20T08:15:30.1234567Z'/><EventRecordID>41872</EventRecordID>"
    L"<Correlation/><Execution ProcessID='11628' ThreadID='9124'/><Channel>Application</Channel>"
    L"<Computer>WORKSTATION-17.example.test</Computer>"
    L"<Security UserID='S-1-5-21-1085031214-1563985344-725345543-1001'/></System><EventData>"
    L"<Data Name='AppName'>vguard.exe</Data><Data Name='AppVersion'>6.0.3.27</Data>"
    L"<Data Name='AppTimeStamp'>6717a5d1</Data><Data Name='ModuleName'>KERNELBASE.dll</Data>"
    L"<Data Name='ModuleVersion'>10.0.26100.2314</Data>"
    L"<Data Name='ModuleTimeStamp'>1d62ffbd</Data><Data Name='ExceptionCode'>c0000005</Data>"
    L"<Data Name='FaultingOffset'>00000000000c89ca</Data><Data Name='ProcessId'>0x2d6c</Data>"
    L"<Data Name='ProcessCreationTime'>0x1db3b1c2a5f4e80</Data>"
    L"<Data Name='AppPath'>C:\\Program Files\\Velmora\\Corvane\\bin\\vguard.exe</Data>"
    L"<Data Name='ModulePath'>C:\\Windows\\System32\\KERNELBASE.dll</Data>"
    L"<Data Name='IntegratorReportId'>5cbd2a3e-7c1d-4d6e-9f0b-2f9f8a3b1c47</Data>"
    L"<Data Name='PackageFullName'></Data><Data Name='PackageRelativeAppId'></Data>"
    L"</EventData></Event>";

}  // namespace ostrell
