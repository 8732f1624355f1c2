; The set-up program of Windows. scripts/package.sh makes it, once for 32 and once for 64 bits, and gives it by -D:
;   TARGET   of makensis: x86-unicode or amd64-unicode
;   BITS     32 or 64, of the programs
;   VERSION  1.2.3
;   STAGE    folder with what is installed
;   LISTS    folder with install_files.nsh and remove_files.nsh, which name each of these files but the programs
;   OUTPUT   the set-up program
;   SIGN     optional: a command that signs the file named after it
Target ${TARGET}
!include LogicLib.nsh
!include x64.nsh
!include FileFunc.nsh

!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\ruvo"
!define EVENT_KEY "SYSTEM\CurrentControlSet\Services\EventLog\Application\ruvo"
!define GUIDE "$SMPROGRAMS\ruvo\ruvo guide.lnk"
!define PROMPT "$SMPROGRAMS\ruvo\ruvo command prompt.lnk"

; Exit codes besides 0, and 1 and 2 of every such program (ended by the user, by a failure).
!define EXIT_IN_USE 3 ; a visit was going on to the end of the wait; nothing has changed
!define EXIT_NOT_REPLACED 4 ; a program cannot be written; nothing has changed
!define EXIT_REFUSED 5 ; not on this Windows, or not for this account, or a wrong option

!define MULTIUSER_EXECUTIONLEVEL Highest
!define MULTIUSER_MUI
!define MULTIUSER_INSTALLMODE_COMMANDLINE
!define MULTIUSER_INSTALLMODE_INSTDIR ruvo
!define MULTIUSER_INSTALLMODE_INSTDIR_REGISTRY_KEY "${UNINSTALL_KEY}"
!define MULTIUSER_INSTALLMODE_INSTDIR_REGISTRY_VALUENAME InstallLocation
!define MULTIUSER_INSTALLMODE_DEFAULT_REGISTRY_KEY "${UNINSTALL_KEY}"
!define MULTIUSER_INSTALLMODE_DEFAULT_REGISTRY_VALUENAME InstallLocation
!if ${BITS} == 64
    !define MULTIUSER_USE_PROGRAMFILES64
!endif
!include MultiUser.nsh
!include MUI2.nsh

Name "ruvo ${VERSION}"
OutFile "${OUTPUT}"
SetCompressor /SOLID lzma
BrandingText " "
ShowInstDetails show
ShowUninstDetails show
VIProductVersion ${VERSION}.0
VIAddVersionKey ProductName Ruvo
VIAddVersionKey ProductVersion ${VERSION}.0
VIAddVersionKey FileVersion ${VERSION}.0
VIAddVersionKey FileDescription "ruvo set-up (${BITS}-bit)"
VIAddVersionKey LegalCopyright ""
!ifdef SIGN
    !uninstfinalize '${SIGN} "%1"' = 0
    !finalize '${SIGN} "%1"' = 0
!endif

!define MUI_FINISHPAGE_RUN
!define MUI_FINISHPAGE_RUN_TEXT "Read the guide: from here to a scheduled, watched site in ten minutes"
!define MUI_FINISHPAGE_RUN_FUNCTION OpenGuide
!insertmacro MUI_PAGE_LICENSE "${STAGE}/LICENSE.txt"
!insertmacro MULTIUSER_PAGE_INSTALLMODE
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE English

Var Deadline ; of the wait, in milliseconds of the system's clock
Var IsInUse
Var Failed
Var Previous ; folder of the programs that are upgraded, if they are the machine's

!macro Finish code text
    DetailPrint "${text}"
    ${If} ${Silent}
        System::Call 'kernel32::AttachConsole(i -1)'
        System::Call 'kernel32::GetStdHandle(i -11) p .s'
        Pop $0
        FileWrite $0 "${text}$\r$\n"
    ${EndIf}
    SetErrorLevel ${code}
    Abort "${text}"
!macroend

; Whether a program of that name runs, or is loaded: the system lets nobody write it then. (The marker that ruvo itself
; uses is one session's, and a scheduled visit has a session of its own.)
!macro LookAtFile path
    ${If} ${FileExists} "${path}"
        System::Call 'kernel32::CreateFileW(w "${path}", i 0x40000000, i 7, p 0, i 3, i 0x80, p 0) p .r0 ?e'
        Pop $1
        ${If} $0 P<> -1
            System::Call 'kernel32::CloseHandle(p r0)'
        ${ElseIf} $1 = 32 ; a sharing violation
            StrCpy $IsInUse "${path}"
        ${EndIf}
    ${EndIf}
!macroend

!macro ForEachProgram macro suffix
    !insertmacro ${macro} "RUVO.exe" "${suffix}"
    !insertmacro ${macro} "ruvoctl.exe" "${suffix}"
    !insertmacro ${macro} "ruvo.dll" "${suffix}"
    !insertmacro ${macro} "p32ls-sim.exe" "${suffix}"
    !insertmacro ${macro} "oncrpc.dll" "${suffix}"
    !insertmacro ${macro} "HalvexCryptoKit.dll" "${suffix}"
!macroend
!macro LookAtProgram name suffix
    !insertmacro LookAtFile "$INSTDIR\${name}${suffix}"
!macroend

!macro DefineWait prefix
Function ${prefix}StartWait
    ${${prefix}GetParameters} $0
    ClearErrors
    ${${prefix}GetOptions} $0 "/WAIT=" $1
    ${If} ${Errors}
        StrCpy $1 10
    ${EndIf}
    IntOp $2 $1 + 0
    ${If} "$2" != "$1"
    ${OrIf} $2 < 0
    ${OrIf} $2 > 1000
        !insertmacro Finish ${EXIT_REFUSED} "/WAIT: expected a number of minutes"
    ${EndIf}
    System::Call 'kernel32::GetTickCount64() l .r0'
    System::Int64Op $2 * 60000
    Pop $2
    System::Int64Op $0 + $2
    Pop $Deadline
FunctionEnd

; Ends the set-up when time is up, else returns after a pause.
Function ${prefix}PauseOrEnd
    System::Call 'kernel32::GetTickCount64() l .r0'
    System::Int64Op $0 >= $Deadline
    Pop $1
    ${If} $1 <> 0
        !insertmacro Finish ${EXIT_IN_USE} "$IsInUse is still in use, by a visit or another program. Nothing has been changed."
    ${EndIf}
    DetailPrint "Waiting: $IsInUse is in use"
    Sleep 1000
FunctionEnd

Function ${prefix}AwaitPrograms
    ${Do}
        StrCpy $IsInUse ""
        !insertmacro ForEachProgram LookAtProgram ""
        ${If} $IsInUse == ""
            ${ExitDo}
        ${EndIf}
        Call ${prefix}PauseOrEnd
    ${Loop}
FunctionEnd

; Sets aside all programs, so that no visit begins, or none of them: then $IsInUse or $Failed names one.
Function ${prefix}SetAside
    StrCpy $IsInUse ""
    StrCpy $Failed ""
    !insertmacro ForEachProgram SetAsideProgram ".old"
    !insertmacro ForEachProgram LookAtProgram ".old" ; a visit may have begun just before
    ${If} $IsInUse != ""
    ${OrIf} $Failed != ""
        !insertmacro ForEachProgram PutBackProgram ".old"
    ${EndIf}
FunctionEnd

; The programs are out of the way when it returns.
Function ${prefix}TakePrograms
    ${Do}
        Call ${prefix}AwaitPrograms
        Call ${prefix}SetAside
        ${If} $Failed != ""
            RMDir /r "$INSTDIR\new"
            !insertmacro Finish ${EXIT_NOT_REPLACED} "$Failed cannot be replaced. Nothing has been changed."
        ${EndIf}
        ${If} $IsInUse == ""
            ${ExitDo}
        ${EndIf}
        Call ${prefix}PauseOrEnd
    ${Loop}
FunctionEnd

; $0: whether the file is ours, by its version resource. The real libraries may have taken the place of the stand-ins.
Function ${prefix}IsOurs
    Exch $1
    StrCpy $0 0
    System::Call 'version::GetFileVersionInfoSizeW(w r1, p 0) i .r2'
    ${If} $2 > 0
        System::Alloc $2
        Pop $3
        System::Call 'version::GetFileVersionInfoW(w r1, i 0, i r2, p r3) i .r4'
        System::Call 'version::VerQueryValueW(p r3, w "\StringFileInfo\040904E4\ProductName", *p .r5, *i .r6) i .r4'
        ${If} $4 <> 0
            System::Call 'kernel32::lstrcmpW(p r5, w "Ruvo") i .r4'
            ${If} $4 = 0
                StrCpy $0 1
            ${EndIf}
        ${EndIf}
        System::Free $3
    ${EndIf}
    Pop $1
FunctionEnd
!macroend

!macro SetAsideProgram name suffix
    ${If} $Failed == ""
    ${AndIf} ${FileExists} "$INSTDIR\${name}"
        Delete "$INSTDIR\${name}${suffix}" ; of a set-up that was killed
        ClearErrors
        Rename "$INSTDIR\${name}" "$INSTDIR\${name}${suffix}"
        ${If} ${Errors}
            StrCpy $Failed "$INSTDIR\${name}"
        ${EndIf}
    ${EndIf}
!macroend
!macro PutBackProgram name suffix
    ${If} ${FileExists} "$INSTDIR\${name}${suffix}"
    ${AndIfNot} ${FileExists} "$INSTDIR\${name}"
        Rename "$INSTDIR\${name}${suffix}" "$INSTDIR\${name}"
    ${EndIf}
!macroend
; One that has just been placed makes room for the one that comes back.
!macro DeleteIfOld name suffix
    ${If} ${FileExists} "$INSTDIR\${name}${suffix}"
        Delete "$INSTDIR\${name}"
    ${EndIf}
!macroend
!macro DeleteProgram name suffix
    Delete "$INSTDIR\${name}${suffix}"
!macroend
!macro ExtractProgram name suffix
    File "${STAGE}/${name}"
!macroend
!macro PlaceProgram name suffix
    ${If} ${FileExists} "$INSTDIR\new\${name}"
        ClearErrors
        Rename "$INSTDIR\new\${name}" "$INSTDIR\${name}"
        ${If} ${Errors}
            StrCpy $Failed "$INSTDIR\${name}"
        ${EndIf}
    ${EndIf}
!macroend
; A library that is not ours stays.
!macro KeepForeign prefix name
    ${If} ${FileExists} "$INSTDIR\${name}.old"
        Push "$INSTDIR\${name}.old"
        Call ${prefix}IsOurs
        ${If} $0 = 0
            Delete "$INSTDIR\new\${name}"
            Delete "$INSTDIR\${name}"
            Rename "$INSTDIR\${name}.old" "$INSTDIR\${name}"
            DetailPrint "$INSTDIR\${name} is not the stand-in, and stays"
        ${EndIf}
    ${EndIf}
!macroend

!insertmacro DefineWait ""
!insertmacro DefineWait "un."

; The folder with its owner and its permissions at once, so that nobody can make a file in it meanwhile. One that is
; there gets them, as any user can make a folder in that place; but not when the programs are upgraded: then it may allow
; more to accounts that visit or watch.
!macro MakeFolderOf descriptor path
    System::Call 'advapi32::ConvertStringSecurityDescriptorToSecurityDescriptorW(w "${descriptor}", i 1, *p .r1, p 0) i .r0'
    ${If} $0 <> 0
        System::Call '*(&l4, p r1, i 0) p .r2'
        System::Call 'kernel32::CreateDirectoryW(w "${path}", p r2) i .r0 ?e'
        Pop $3
        ${If} $0 = 0
        ${AndIf} $3 = 183 ; exists
            StrCpy $0 1
            ${If} $Previous == ""
                System::Call 'advapi32::SetFileSecurityW(w "${path}", i 5, p r1) i .r0' ; owner and permissions
            ${EndIf}
        ${EndIf}
        System::Free $2
        System::Call 'kernel32::LocalFree(p r1)'
    ${EndIf}
    ${If} $0 = 0
        StrCpy $Failed "${path}"
    ${EndIf}
!macroend

!macro MakeMachineFolders
    ; For the system and administrators, and what is made below as well; nothing comes from above.
    StrCpy $Failed ""
    !insertmacro MakeFolderOf "O:BAD:PAI(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)" "$APPDATA\ruvo"
    !insertmacro MakeFolderOf "O:BAD:PAI(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)" "$APPDATA\ruvo\state"
    ${If} $Failed != ""
        DetailPrint "$Failed: the folder, or its permissions, cannot be made"
        SetErrorLevel 2
    ${EndIf}
    ; Besides the account of the task, when it is another one.
    ${GetParameters} $0
    ClearErrors
    ${GetOptions} $0 "/ACCOUNT=" $1
    ${IfNot} ${Errors}
        nsExec::ExecToLog '"$SYSDIR\icacls.exe" "$APPDATA\ruvo" /grant "$1:(OI)(CI)M"'
        Pop $0
        ${If} $0 != 0
            DetailPrint "$1: the account gets no access to $APPDATA\ruvo (icacls: $0)"
            SetErrorLevel 2
        ${EndIf}
        nsExec::ExecToLog '"$SYSDIR\icacls.exe" "$APPDATA\ruvo\state" /grant "$1:(OI)(CI)M"'
        Pop $0
    ${EndIf}
!macroend

; The name, its value, and in which root: that of the machine or of the user.
!macro WriteKeys root flag
    WriteRegStr ${root} "${UNINSTALL_KEY}" DisplayName "ruvo ${VERSION} (${BITS}-bit)"
    WriteRegStr ${root} "${UNINSTALL_KEY}" DisplayVersion "${VERSION}"
    WriteRegStr ${root} "${UNINSTALL_KEY}" DisplayIcon "$INSTDIR\RUVO.exe"
    WriteRegStr ${root} "${UNINSTALL_KEY}" InstallLocation "$INSTDIR"
    WriteRegStr ${root} "${UNINSTALL_KEY}" UninstallString '"$INSTDIR\uninstall.exe" ${flag}'
    WriteRegStr ${root} "${UNINSTALL_KEY}" QuietUninstallString '"$INSTDIR\uninstall.exe" ${flag} /S'
    WriteRegDWORD ${root} "${UNINSTALL_KEY}" NoModify 1
    WriteRegDWORD ${root} "${UNINSTALL_KEY}" NoRepair 1
!macroend

Section
    ReadRegStr $Previous HKLM "${UNINSTALL_KEY}" InstallLocation
    Call StartWait
    Call AwaitPrograms
    SetOutPath "$INSTDIR\new"
    ClearErrors
    !insertmacro ForEachProgram ExtractProgram ""
    SetOutPath "$INSTDIR"
    ${If} ${Errors}
        RMDir /r "$INSTDIR\new"
        !insertmacro Finish ${EXIT_NOT_REPLACED} "$INSTDIR cannot be written. Nothing has been changed."
    ${EndIf}
    Call TakePrograms
    !insertmacro KeepForeign "" oncrpc.dll
    !insertmacro KeepForeign "" HalvexCryptoKit.dll
    StrCpy $Failed ""
    !insertmacro ForEachProgram PlaceProgram ""
    ${If} $Failed != ""
        !insertmacro ForEachProgram DeleteIfOld ".old"
        !insertmacro ForEachProgram PutBackProgram ".old"
        RMDir /r "$INSTDIR\new"
        !insertmacro Finish ${EXIT_NOT_REPLACED} "$Failed cannot be replaced. Nothing has been changed."
    ${EndIf}
    !insertmacro ForEachProgram DeleteProgram ".old"
    RMDir "$INSTDIR\new"

    ClearErrors
    !include "${LISTS}/install_files.nsh"
    SetOutPath "$INSTDIR"
    WriteUninstaller "$INSTDIR\uninstall.exe"
    CreateDirectory "$SMPROGRAMS\ruvo"
    CreateShortcut "${GUIDE}" "$INSTDIR\docs\windows.html"
    CreateShortcut "${PROMPT}" "$SYSDIR\cmd.exe" '/k "set PATH=$INSTDIR;%PATH%"'
    ${If} $MultiUser.InstallMode == AllUsers
        !insertmacro WriteKeys HKLM /AllUsers
        ; The log's viewer takes the texts of entries from there.
        WriteRegExpandStr HKLM "${EVENT_KEY}" EventMessageFile "$INSTDIR\ruvoctl.exe"
        WriteRegDWORD HKLM "${EVENT_KEY}" TypesSupported 7
    ${Else}
        !insertmacro WriteKeys HKCU /CurrentUser
    ${EndIf}
    ${If} ${Errors}
        DetailPrint "Some files could not be written"
        SetErrorLevel 2
    ${EndIf}
    ${If} $MultiUser.InstallMode == AllUsers
        !insertmacro MakeMachineFolders
    ${EndIf}
SectionEnd

; Sites, events, logs, the state, and programs that run after a visit are the user's, and stay. So do tasks: they visit
; again when the programs come back.
Section un.
    Call un.StartWait
    Call un.TakePrograms
    !insertmacro KeepForeign "un." oncrpc.dll
    !insertmacro KeepForeign "un." HalvexCryptoKit.dll
    !insertmacro ForEachProgram DeleteProgram ".old"
    !include "${LISTS}/remove_files.nsh"
    Delete "$INSTDIR\uninstall.exe"
    RMDir "$INSTDIR"
    Delete "${GUIDE}"
    Delete "${PROMPT}"
    RMDir "$SMPROGRAMS\ruvo"
    ${If} $MultiUser.InstallMode == AllUsers
        DeleteRegKey HKLM "${UNINSTALL_KEY}"
        DeleteRegKey HKLM "${EVENT_KEY}"
    ${Else}
        DeleteRegKey HKCU "${UNINSTALL_KEY}"
    ${EndIf}
SectionEnd

Function OpenGuide
    ExecShell open "$INSTDIR\docs\windows.html"
FunctionEnd

Var GivenFolder

; A question nobody answers must not stop a silent set-up.
!macro RefuseMachineForUser prefix
    UserInfo::GetAccountType
    Pop $0
    ${${prefix}GetParameters} $1
    ClearErrors
    ${${prefix}GetOptions} $1 "/AllUsers" $2
    ${IfNot} ${Errors}
    ${AndIf} $0 != "Admin"
        SetErrorLevel ${EXIT_REFUSED}
        MessageBox MB_OK|MB_ICONSTOP "Only an administrator can do this for the machine." /SD IDOK
        Quit
    ${EndIf}
!macroend

Function .onInit
    StrCpy $GivenFolder $INSTDIR ; of /D=, which the mode would replace
    !if ${BITS} == 64
        ${IfNot} ${RunningX64}
            SetErrorLevel ${EXIT_REFUSED}
            MessageBox MB_OK|MB_ICONSTOP "This is the set-up for 64-bit Windows." /SD IDOK
            Quit
        ${EndIf}
        SetRegView 64
    !endif
    !insertmacro RefuseMachineForUser ""
    !insertmacro MULTIUSER_INIT
    ${If} $GivenFolder != ""
        StrCpy $INSTDIR $GivenFolder
    ${EndIf}
FunctionEnd

Function un.onInit
    !if ${BITS} == 64
        SetRegView 64
    !endif
    StrCpy $GivenFolder $INSTDIR
    !insertmacro RefuseMachineForUser "un."
    !insertmacro MULTIUSER_UNINIT
    StrCpy $INSTDIR $GivenFolder
FunctionEnd
