; The setup program. Installs launcher, helper, icon and the two data files; the launcher downloads the game at its first
; start. Made by makensis with these definitions: VERSION, PUBLISHER, FILES (the folder of what is installed), OUTPUT,
; ICON, and SIGN (a command that signs the uninstaller; optional).
;
;   ColdAnchorSetup-<version>.exe [/S] [/ALLUSERS] [/D=FOLDER]
;
; For the player alone in his own folder, without a prompt; with /ALLUSERS, or by choice on the first page, for everyone.
; /S asks nothing. FOLDER is a whole path, with backslashes, of a folder below a drive's root. Exit status: 0 installed,
; 1 cancelled, 2 a file could not be written, 3 the folder holds other things or can't be one, 4 the game or its launcher is
; running, 740 /ALLUSERS /S without an administrator's rights.
;
; Whatever interrupts it, each file is the old one or the new one: they are written into a folder of their own inside the
; installation and moved from there. Where a setup left that folder, the next one goes on.
Unicode true
Target amd64-unicode
SetCompressor /SOLID lzma
SetDateSave off
ManifestDPIAware true
ManifestSupportedOS Win10
ManifestLongPathAware true
RequestExecutionLevel user
AutoCloseWindow true
AllowSkipFiles off

!include FileFunc.nsh
!include LogicLib.nsh
!include MUI2.nsh
!include nsDialogs.nsh

Name "Cold Anchor"
OutFile "${OUTPUT}"
BrandingText "Cold Anchor ${VERSION}"
VIProductVersion "${VERSION}.0"
VIFileVersion "${VERSION}.0"
VIAddVersionKey ProductName "Cold Anchor"
VIAddVersionKey CompanyName "${PUBLISHER}"
VIAddVersionKey FileDescription "Cold Anchor Setup"
VIAddVersionKey FileVersion "${VERSION}"
VIAddVersionKey ProductVersion "${VERSION}"
VIAddVersionKey LegalCopyright ""
!ifdef SIGN
!uninstfinalize '${SIGN} "%1"' = 0
!endif

!define LAUNCHER ColdAnchorLauncher.exe
!define STAGE ColdAnchorSetup.new
!define REGISTRY "Software\Microsoft\Windows\CurrentVersion\Uninstall\ColdAnchor"
!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_ABORTWARNING

Page custom askForWhom takeForWhom
!define MUI_PAGE_CUSTOMFUNCTION_SHOW askForFolder
!define MUI_PAGE_CUSTOMFUNCTION_LEAVE takeFolder
!define MUI_DIRECTORYPAGE_TEXT_TOP "At its first start the launcher downloads the game into this folder. Choose a disk with room for it."
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
Page custom offerStart startLauncher

!define MUI_UNCONFIRMPAGE_TEXT_TOP "The launcher, the game and everything else in this folder is removed, except for the \
folders save and userdata. Your profile and settings stay."
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE English
LangString ^ErrorWriting ${LANG_ENGLISH} "The disk is full, or can't be written: "

Var forAll   ; 1: everyone on this computer
Var elevated ; 1: started again by this program for the rights
Var button
Var failed   ; 1: a file can't be written or removed
Var top      ; the folder that is removed

; ---- What both programs need ----------------------------------------------------------------------------------------

; Ends without a word if silent, else with one.
!macro fail STATUS TEXT
    SetErrorLevel ${STATUS}
    MessageBox MB_ICONSTOP "${TEXT}" /SD IDOK
    SetErrorLevel ${STATUS}
    Quit
!macroend

!macro common UN
; Pushes 1 for an administrator's rights, else 0.
Function ${UN}isAdministrator
    UserInfo::GetAccountType
    Pop $0
    StrCpy $1 0
    ${If} $0 == "Admin"
        StrCpy $1 1
    ${EndIf}
    Push $1
FunctionEnd

Function ${UN}setScope
    ${If} $forAll = 1
        SetShellVarContext all
    ${Else}
        SetShellVarContext current
    ${EndIf}
FunctionEnd

; Pushes 1 if the folder is an installation: Windows knows it as one, it has the launcher and its data, or an interrupted
; setup left it.
Function ${UN}isInstallation
    StrCpy $1 0
    SetShellVarContext all
    ReadRegStr $0 SHCTX "${REGISTRY}" InstallLocation
    ${IfThen} $0 == $INSTDIR ${|} StrCpy $1 1 ${|}
    SetShellVarContext current
    ReadRegStr $0 SHCTX "${REGISTRY}" InstallLocation
    ${IfThen} $0 == $INSTDIR ${|} StrCpy $1 1 ${|}
    Call ${UN}setScope
    ${If} ${FileExists} "$INSTDIR\${LAUNCHER}"
    ${AndIf} ${FileExists} "$INSTDIR\data\update_server.txt"
    ${OrIf} ${FileExists} "$INSTDIR\${STAGE}\*"
        StrCpy $1 1
    ${EndIf}
    Push $1
FunctionEnd

; A running program's file can't be opened for writing: ERROR_SHARING_VIOLATION. Other errors are for the writing itself.
Function ${UN}waitForPrograms
    ${ForEach} $1 1 3 + 1
        ${Select} $1
        ${Case} 1
            StrCpy $0 "$INSTDIR\ColdAnchor.exe"
        ${Case} 2
            StrCpy $0 "$INSTDIR\${LAUNCHER}"
        ${Case} 3
            StrCpy $0 "$INSTDIR\ColdAnchorUpdateHelper.exe"
        ${EndSelect}
        ${Do}
            System::Call "kernel32::CreateFileW(w r0, i 0x40000000, i 7, p 0, i 3, i 0, p 0) p .r2 ?e"
            Pop $3
            System::Call "kernel32::CloseHandle(p r2)"
            ${If} $3 <> 32
                ${Break}
            ${EndIf}
            MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "Close Cold Anchor and its launcher first." /SD IDCANCEL IDRETRY +3
            SetErrorLevel 4
            Quit
        ${Loop}
    ${Next}
FunctionEnd

; Takes a folder from the stack and removes what is in it, and then the folder if it is empty. Links are removed and never
; followed. In the folder $top, which may be a link itself, the player's own folders and the uninstaller stay.
Function ${UN}removeFolder
    Exch $0
    Push $1
    Push $2
    ; Paths go into these calls by register: in a call's text an apostrophe of a name would end it.
    System::Call "kernel32::GetFileAttributesW(w r0) i .r4"
    IntOp $4 $4 & 0x400 ; FILE_ATTRIBUTE_REPARSE_POINT
    ${If} $4 <> 0
    ${AndIf} $0 != $top
        Goto emptied
    ${EndIf}
    FindFirst $1 $2 "$0\*"
    ${DoWhile} $2 != ""
        ${If} $2 == "."
        ${OrIf} $2 == ".."
            Goto next
        ${EndIf}
        ${If} $0 == $top
            ${If} $2 == "save"
            ${OrIf} $2 == "userdata"
            ${OrIf} $2 == "Uninstall.exe"
                Goto next
            ${EndIf}
        ${EndIf}
        StrCpy $3 "$0\$2"
        System::Call "kernel32::GetFileAttributesW(w r3) i .r4"
        IntOp $4 $4 & 0x10 ; FILE_ATTRIBUTE_DIRECTORY
        ${If} $4 <> 0
            Push $3
            Call ${UN}removeFolder
        ${Else}
            System::Call "kernel32::SetFileAttributesW(w r3, i 0x80)" ; what is read-only can't be removed
            System::Call "kernel32::DeleteFileW(w r3) i .r4"
            ${IfThen} $4 = 0 ${|} StrCpy $failed 1 ${|}
        ${EndIf}
        next:
        FindNext $1 $2
    ${Loop}
    FindClose $1
    emptied:
    System::Call "kernel32::RemoveDirectoryW(w r0)"
    Pop $2
    Pop $1
    Pop $0
FunctionEnd
!macroend
!insertmacro common ""
!insertmacro common "un."

; ---- Installation ---------------------------------------------------------------------------------------------------

; Where it is installed already, or the usual place.
Function proposeFolder
    Call setScope
    ReadRegStr $0 SHCTX "${REGISTRY}" InstallLocation
    ${If} $0 != ""
        StrCpy $INSTDIR $0
    ${ElseIf} $forAll = 1
        StrCpy $INSTDIR "$PROGRAMFILES64\Cold Anchor"
    ${Else}
        StrCpy $INSTDIR "$LOCALAPPDATA\Programs\Cold Anchor"
    ${EndIf}
FunctionEnd

Function .onInit
    StrCpy $forAll 0
    StrCpy $elevated 0
    ${GetParameters} $R0
    ClearErrors
    ${GetOptions} $R0 "/ALLUSERS" $R1
    ${IfNot} ${Errors}
        StrCpy $forAll 1
        Call isAdministrator
        Pop $0
        ${If} $0 = 1
            StrCpy $elevated 1
        ${ElseIf} ${Silent}
            SetErrorLevel 740
            Quit
        ${EndIf}
    ${EndIf}
    ${If} $INSTDIR == "" ; no /D=, or with a folder that can't be one
        System::Call "kernel32::GetCommandLineW() w .r0"
        System::Call "shlwapi::StrStrIW(w r0, w '/D=') p .r1" ; GetOptions overlooks one within quotation marks
        ${If} $1 P<> 0
        ${AndIf} ${Silent}
            SetErrorLevel 3
            Quit
        ${EndIf}
        Call proposeFolder
    ${Else}
        Call setScope
    ${EndIf}
FunctionEnd

Function askForWhom
    ${If} $elevated = 1
        Abort
    ${EndIf}
    !insertmacro MUI_HEADER_TEXT "Install Cold Anchor" "For whom is it installed?"
    nsDialogs::Create 1018
    Pop $0
    ${NSD_CreateFirstRadioButton} 0 10u 100% 12u "&Only for me"
    Pop $button
    ${NSD_CreateAdditionalRadioButton} 0 54u 100% 12u "For &everyone on this computer"
    Pop $1
    ${NSD_CreateLabel} 12u 24u -12u 20u "Needs no special rights, and neither do updates."
    Pop $0
    ${NSD_CreateLabel} 12u 68u -12u 20u "Windows asks for an administrator's permission, now and whenever the game is updated."
    Pop $0
    ${If} $forAll = 1
        ${NSD_Check} $1
    ${Else}
        ${NSD_Check} $button
    ${EndIf}
    nsDialogs::Show
FunctionEnd

; Rights are got by a second start of this program, which goes on in place of the first.
Function takeForWhom
    ${NSD_GetState} $button $0
    StrCpy $R2 $forAll
    ${If} $0 = ${BST_CHECKED}
        StrCpy $forAll 0
    ${Else}
        StrCpy $forAll 1
        Call isAdministrator
        Pop $0
        ${If} $0 = 0
            ClearErrors
            ExecShell runas "$EXEPATH" "/ALLUSERS"
            ${If} ${Errors}
                Abort
            ${EndIf}
            Quit
        ${EndIf}
    ${EndIf}
    ${If} $R2 <> $forAll
        Call proposeFolder
    ${EndIf}
FunctionEnd

; The first page after an elevated start has none before it, and "Back" would end the program.
Function askForFolder
    ${If} $elevated = 1
        GetDlgItem $0 $HWNDPARENT 3
        ShowWindow $0 ${SW_HIDE}
    ${EndIf}
FunctionEnd

; The uninstaller empties the folder, so it must be ours alone: pushes 1 if it is new, empty or an installation.
Function isFolderOurs
    StrCpy $0 $INSTDIR
    System::Call "kernel32::GetFullPathNameW(w r0, i ${NSIS_MAX_STRLEN}, w .r1, p 0)" ; as the uninstaller sees it
    StrCpy $INSTDIR $1
    Call isInstallation
    Pop $2
    ${If} $2 = 0
        StrCpy $2 1
        FindFirst $0 $1 "$INSTDIR\*"
        ${DoWhile} $1 != ""
            ${If} $1 != "."
            ${AndIf} $1 != ".."
            ${AndIf} $1 != "save"
            ${AndIf} $1 != "userdata"
                StrCpy $2 0
            ${EndIf}
            FindNext $0 $1
        ${Loop}
        FindClose $0
    ${EndIf}
    Push $2
FunctionEnd

; A folder that is empty now may be one for all games, and a removal would take the others with it: then it is one in it.
Function takeFolder
    Call isFolderOurs
    Pop $0
    ${GetFileName} $INSTDIR $1
    ${DirState} $INSTDIR $2
    ${If} $1 != "Cold Anchor"
    ${AndIf} $2 = 0
        StrCpy $0 0
    ${EndIf}
    ${If} $0 = 0
        StrCpy $INSTDIR "$INSTDIR\Cold Anchor"
        Call isFolderOurs
        Pop $0
    ${EndIf}
    ${If} $0 = 0
        MessageBox MB_ICONEXCLAMATION "This folder holds other files. Please choose a new or an empty one."
        Abort
    ${EndIf}
    SendMessage $mui.DirectoryPage.Directory ${WM_SETTEXT} 0 "STR:$INSTDIR" ; the page reads it behind this function
FunctionEnd

; Called for each file of the stage: $R9 is its path, $R8 its folder's, $R7 its name. The caller needs $0 to $9. A scanner
; that looks at a new file lets go of it soon.
Function putInPlace
    StrLen $R0 "$INSTDIR\${STAGE}"
    StrCpy $R0 $R8 "" $R0
    CreateDirectory "$INSTDIR$R0"
    StrCpy $R0 "$INSTDIR$R0\$R7"
    SetFileAttributes $R0 NORMAL ; a read-only file can't be replaced
    ${ForEach} $R3 1 20 + 1
        ; The bytes reach the disk before the name does, or a power cut could leave a name without them.
        System::Call "kernel32::CreateFileW(w R9, i 0x40000000, i 7, p 0, i 3, i 0, p 0) p .R2"
        System::Call "kernel32::FlushFileBuffers(p R2) i .R1"
        System::Call "kernel32::CloseHandle(p R2)"
        ${If} $R1 <> 0
            System::Call "kernel32::MoveFileExW(w R9, w R0, i 9) i .R1" ; over what is there
        ${EndIf}
        ${IfThen} $R1 <> 0 ${|} ${Break} ${|}
        Sleep 100
    ${Next}
    ClearErrors ; the caller takes them for the end of a folder
    ${If} $R1 = 0
        StrCpy $failed 1
        Push StopLocate
    ${Else}
        Push "" ; go on
    ${EndIf}
FunctionEnd

; Leaves no folder that this setup made for nothing.
Function removeStage
    SetOutPath "$TEMP" ; a working directory can't be removed
    Push "$INSTDIR\${STAGE}"
    Call removeFolder
    RMDir "$INSTDIR"
FunctionEnd

; Called after a file of the stage couldn't be written, and the player was told.
Function .onInstFailed
    Call removeStage
    SetErrorLevel 2
FunctionEnd

Section
    Call isFolderOurs
    Pop $0
    ${If} $0 = 0
        !insertmacro fail 3 "This folder holds other files. Please choose a new or an empty one."
    ${EndIf}
    Call waitForPrograms
    Call removeStage
    ${If} ${FileExists} "$INSTDIR\${STAGE}\*" ; a link in it would lead to other people's files
        !insertmacro fail 2 "A folder can't be removed: $INSTDIR\${STAGE}"
    ${EndIf}
    ClearErrors
    SetOutPath "$INSTDIR\${STAGE}"
    File /r "${FILES}/*"
    WriteUninstaller "$INSTDIR\${STAGE}\Uninstall.exe"
    StrCpy $failed 0
    ${If} ${Errors}
        StrCpy $failed 1
        Call removeStage
    ${Else}
        ${Locate} "$INSTDIR\${STAGE}" "/L=F" putInPlace
        ${If} ${Errors}
        ${OrIfNot} ${FileExists} "$INSTDIR\${LAUNCHER}" ; a scanner may have taken it out of the stage
            StrCpy $failed 1
        ${EndIf}
        ${If} $failed = 0 ; else it shows the next setup that this folder is its own
            Call removeStage
        ${EndIf}
    ${EndIf}
    ${If} $failed = 1
        !insertmacro fail 2 "A file can't be written. Is the disk full, or the folder protected?"
    ${EndIf}
    SetOutPath "$INSTDIR" ; where the shortcut starts the launcher
    CreateShortcut "$SMPROGRAMS\Cold Anchor.lnk" "$INSTDIR\${LAUNCHER}"
    WriteRegStr SHCTX "${REGISTRY}" DisplayName "Cold Anchor"
    WriteRegStr SHCTX "${REGISTRY}" DisplayVersion "${VERSION}"
    WriteRegStr SHCTX "${REGISTRY}" DisplayIcon "$INSTDIR\${LAUNCHER}"
    WriteRegStr SHCTX "${REGISTRY}" Publisher "${PUBLISHER}"
    WriteRegStr SHCTX "${REGISTRY}" InstallLocation "$INSTDIR"
    WriteRegStr SHCTX "${REGISTRY}" UninstallString '"$INSTDIR\Uninstall.exe"'
    WriteRegStr SHCTX "${REGISTRY}" QuietUninstallString '"$INSTDIR\Uninstall.exe" /S'
    WriteRegDWORD SHCTX "${REGISTRY}" NoModify 1
    WriteRegDWORD SHCTX "${REGISTRY}" NoRepair 1
SectionEnd

Function offerStart
    !insertmacro MUI_HEADER_TEXT "Cold Anchor is installed" "The launcher downloads the game at its first start."
    nsDialogs::Create 1018
    Pop $0
    ${NSD_CreateCheckbox} 0 10u 100% 12u "&Start the launcher"
    Pop $button
    ${NSD_Check} $button
    GetDlgItem $0 $HWNDPARENT 1 ; the button that was "Next"
    SendMessage $0 ${WM_SETTEXT} 0 "STR:&Close"
    GetDlgItem $0 $HWNDPARENT 2
    EnableWindow $0 0
    ShowWindow $0 ${SW_HIDE}
    GetDlgItem $0 $HWNDPARENT 3
    ShowWindow $0 ${SW_HIDE}
    nsDialogs::Show
FunctionEnd

; The desktop starts it where this program has an administrator's rights, so that it doesn't inherit them.
Function startLauncher
    ${NSD_GetState} $button $0
    ${If} $0 <> ${BST_CHECKED}
        Return
    ${EndIf}
    Call isAdministrator
    Pop $0
    ${If} $0 = 1
        Exec '"$WINDIR\explorer.exe" "$INSTDIR\${LAUNCHER}"'
    ${Else}
        SetOutPath "$INSTDIR"
        Exec '"$INSTDIR\${LAUNCHER}"'
    ${EndIf}
FunctionEnd

; ---- Removal --------------------------------------------------------------------------------------------------------

Function un.onInit
    StrCpy $forAll 0
    SetShellVarContext all
    ReadRegStr $0 SHCTX "${REGISTRY}" InstallLocation
    ${If} $0 == $INSTDIR
        StrCpy $forAll 1
        Call un.isAdministrator
        Pop $0
        ${If} $0 = 0
            ${If} ${Silent}
                SetErrorLevel 740
            ${Else}
                ExecShell runas "$INSTDIR\Uninstall.exe"
            ${EndIf}
            Quit
        ${EndIf}
    ${EndIf}
    Call un.setScope
    Call un.isInstallation
    Pop $0
    ${If} $0 = 0
        !insertmacro fail 3 "This folder holds no installation of Cold Anchor: $INSTDIR"
    ${EndIf}
FunctionEnd

; Takes the folder's entries of one scope away; those of another installation stay.
Function un.removeEntries
    ReadRegStr $0 SHCTX "${REGISTRY}" InstallLocation
    ${If} $0 == $INSTDIR
        Delete "$SMPROGRAMS\Cold Anchor.lnk"
        DeleteRegKey SHCTX "${REGISTRY}"
    ${EndIf}
FunctionEnd

Section Uninstall
    Call un.waitForPrograms
    SetOutPath "$TEMP" ; a working directory can't be removed
    ; With this prefix a path may be longer than 260 characters.
    StrCpy $0 $INSTDIR 2
    ${If} $0 == "\\"
        StrCpy $top $INSTDIR "" 2
        StrCpy $top "\\?\UNC\$top"
    ${Else}
        StrCpy $top "\\?\$INSTDIR"
    ${EndIf}
    ${Do}
        StrCpy $failed 0
        Push $top
        Call un.removeFolder
        ${If} $failed = 0
            ${Break}
        ${EndIf}
        MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "A file is in use and can't be removed. \
            Close the programs that use this folder: $INSTDIR" /SD IDCANCEL IDRETRY +3
        SetErrorLevel 2
        Quit
    ${Loop}
    Delete "$INSTDIR\Uninstall.exe"
    RMDir "$INSTDIR"
    SetShellVarContext all
    Call un.removeEntries
    SetShellVarContext current
    Call un.removeEntries
SectionEnd
