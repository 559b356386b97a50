; The installer for Windows. "dist" makes it:
;   makensis -DBITS=64|32 -DVERSION=... -DFILES=FOLDER -DOUTPUT=FILE slyver.nsi
;
; /S          asks nothing
; /AllUsers   installs for everybody (what an administrator gets unasked), /CurrentUser for oneself
; /PATH       puts sly on the PATH
; /EXPLORER   puts Slyver into the Explorer's menu of every file
; /D=FOLDER   where to; the last option, without quotation marks

Unicode true
!if ${BITS} = 64
  Target amd64-unicode
  !define MULTIUSER_USE_PROGRAMFILES64
!else
  Target x86-unicode
!endif
SetCompressor /SOLID lzma
SetDateSave off
Name "Slyver"
OutFile "${OUTPUT}"
BrandingText "Slyver ${VERSION}"
VIProductVersion "${VERSION}.0"
VIAddVersionKey ProductName "Slyver"
VIAddVersionKey ProductVersion "${VERSION}"
VIAddVersionKey FileVersion "${VERSION}"
VIAddVersionKey FileDescription "Installs Slyver"
VIAddVersionKey CompanyName "Orm Valis"
VIAddVersionKey LegalCopyright "Orm Valis"

!define UNINSTALL "Software\Microsoft\Windows\CurrentVersion\Uninstall\Slyver"
!define EXTENSION "Software\Classes\.sly"
!define TYPE "Software\Classes\Slyver.Piece"
!define MENU "Software\Classes\*\shell"

!define MULTIUSER_EXECUTIONLEVEL Highest
!define MULTIUSER_MUI
!define MULTIUSER_INSTALLMODE_COMMANDLINE
!define MULTIUSER_INSTALLMODE_INSTDIR "Slyver"
!define MULTIUSER_INSTALLMODE_INSTDIR_REGISTRY_KEY "${UNINSTALL}"
!define MULTIUSER_INSTALLMODE_INSTDIR_REGISTRY_VALUENAME "InstallLocation"
!define MULTIUSER_INSTALLMODE_DEFAULT_REGISTRY_KEY "${UNINSTALL}"
!define MULTIUSER_INSTALLMODE_DEFAULT_REGISTRY_VALUENAME "InstallLocation"
!include MultiUser.nsh
!include MUI2.nsh
!include FileFunc.nsh
!include LogicLib.nsh
!include WinMessages.nsh

!define MUI_ICON "slyver.ico"
!define MUI_UNICON "slyver.ico"
!define MUI_COMPONENTSPAGE_SMALLDESC
!insertmacro MULTIUSER_PAGE_INSTALLMODE
!insertmacro MUI_PAGE_COMPONENTS
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE English

; ReadPath opens the PATH of the user or of all: $9 the key, $8 the value's type, $7 a buffer with
; ";" + value + ";", and $6 where in it ";$INSTDIR;" begins, or 0. A PATH may be longer than the texts
; of this language, so that it stays in the buffer. $9 is 0 when it cannot be read.
!macro PathFunctions un
Function ${un}ReadPath
  StrCpy $9 0
  ${If} $MultiUser.InstallMode == AllUsers
    System::Call 'advapi32::RegOpenKeyExW(p -2147483646, \
      w "SYSTEM\CurrentControlSet\Control\Session Manager\Environment", i 0, i 0x20007, *p .r9) i .r0'
  ${Else}
    System::Call 'advapi32::RegOpenKeyExW(p -2147483647, w "Environment", i 0, i 0x20007, *p .r9) i .r0'
  ${EndIf}
  ${If} $0 <> 0
    StrCpy $9 0
    Return
  ${EndIf}
  System::Alloc 140000
  Pop $7
  IntPtrOp $1 $7 + 2
  System::Call 'advapi32::RegQueryValueExW(p r9, w "Path", p 0, *i .r8, p r1, *i 131070) i .r0'
  ${If} $0 = 2 ; There is none.
    StrCpy $8 2
  ${ElseIf} $0 <> 0
    StrCpy $8 0
  ${EndIf}
  ${If} $8 <> 1
  ${AndIf} $8 <> 2 ; Neither of the two types of text.
    Call ${un}ClosePath
    StrCpy $9 0
    Return
  ${EndIf}
  System::Call '*$7(&i2 59)'
  System::Call 'kernel32::lstrcatW(p r7, w ";")'
  System::Call 'shlwapi::StrStrIW(p r7, w ";$INSTDIR;") p .r6'
FunctionEnd

; Writes back what stands in the buffer between the first ";" and the last.
Function ${un}WritePath
  System::Call 'kernel32::lstrlenW(p r7) i .r0'
  ${If} $0 < 2
    System::Call 'advapi32::RegDeleteValueW(p r9, w "Path")'
  ${Else}
    IntOp $1 $0 * 2
    IntPtrOp $2 $7 + $1
    IntPtrOp $2 $2 - 2
    System::Call '*$2(&i2 0)'
    IntOp $1 $1 - 2 ; Without the ";" on both sides, with the end.
    IntPtrOp $2 $7 + 2
    System::Call 'advapi32::RegSetValueExW(p r9, w "Path", i 0, i r8, p r2, i r1)'
  ${EndIf}
  SendMessage ${HWND_BROADCAST} ${WM_SETTINGCHANGE} 0 "STR:Environment" /TIMEOUT=2000
FunctionEnd

Function ${un}ClosePath
  System::Call 'advapi32::RegCloseKey(p r9)'
  System::Free $7
FunctionEnd
!macroend
!insertmacro PathFunctions ""
!insertmacro PathFunctions "un."

; Tells the Explorer that what opens files has changed.
!macro TellExplorer
  System::Call 'shell32::SHChangeNotify(i 0x8000000, i 0, p 0, p 0)'
!macroend

Section "Slyver"
  SectionIn RO
  ; What an earlier version has left, but for the settings.
  ${If} ${FileExists} "$INSTDIR\uninstall.exe"
    ExecWait '"$INSTDIR\uninstall.exe" /S /KEEP /$MultiUser.InstallMode _?=$INSTDIR'
  ${EndIf}
  SetOutPath $INSTDIR
  File "${FILES}\slyver.exe"
  File "${FILES}\sly.exe"
  File "${FILES}\Orm Valis Help.chm"
  WriteUninstaller "$INSTDIR\uninstall.exe"
  WriteRegStr SHCTX "${UNINSTALL}" DisplayName "Slyver"
  WriteRegStr SHCTX "${UNINSTALL}" DisplayVersion "${VERSION}"
  WriteRegStr SHCTX "${UNINSTALL}" DisplayIcon "$INSTDIR\slyver.exe"
  WriteRegStr SHCTX "${UNINSTALL}" Publisher "Orm Valis"
  WriteRegStr SHCTX "${UNINSTALL}" InstallLocation "$INSTDIR"
  WriteRegStr SHCTX "${UNINSTALL}" UninstallString '"$INSTDIR\uninstall.exe" /$MultiUser.InstallMode'
  WriteRegStr SHCTX "${UNINSTALL}" QuietUninstallString \
    '"$INSTDIR\uninstall.exe" /S /$MultiUser.InstallMode'
  WriteRegDWORD SHCTX "${UNINSTALL}" NoModify 1
  WriteRegDWORD SHCTX "${UNINSTALL}" NoRepair 1
  ${GetSize} $INSTDIR "/S=0K" $0 $1 $2
  WriteRegDWORD SHCTX "${UNINSTALL}" EstimatedSize $0
SectionEnd

Section "Start menu"
  CreateShortcut "$SMPROGRAMS\Slyver.lnk" "$INSTDIR\slyver.exe"
SectionEnd

Section "Open .sly pieces with Slyver"
  ; What opened the pieces until now is kept, so that it can come back.
  ReadRegStr $0 SHCTX "${EXTENSION}" ""
  ${If} $0 != ""
  ${AndIf} $0 != "Slyver.Piece"
    WriteRegStr SHCTX "${EXTENSION}" SlyverBefore $0
  ${EndIf}
  WriteRegStr SHCTX "${EXTENSION}" "" "Slyver.Piece"
  WriteRegStr SHCTX "${TYPE}" "" "Sly File"
  WriteRegStr SHCTX "${TYPE}\DefaultIcon" "" '"$INSTDIR\slyver.exe",0'
  ; The program takes all that follows its name for the path, blanks included.
  WriteRegStr SHCTX "${TYPE}\shell\open\command" "" '"$INSTDIR\slyver.exe" %1'
  !insertmacro TellExplorer
SectionEnd

Section /o "sly on the PATH" SectionPath
  Call ReadPath
  ${If} $9 P= 0
    DetailPrint "The PATH could not be read; it stays as it is."
  ${Else}
    System::Call 'kernel32::lstrlenW(p r7) i .r0'
    ${If} $6 P= 0
    ${AndIf} $0 < 30000
      ${If} $0 = 2 ; Nothing but the ";" on both sides.
        System::Call '*$7(&i2 0)'
        System::Call 'kernel32::lstrcatW(p r7, w ";$INSTDIR;")'
      ${Else}
        IntOp $1 $0 * 2
        IntPtrOp $1 $7 + $1
        IntPtrOp $1 $1 - 4
        System::Call '*$1(&i2 .r2)'
        ${If} $2 = 59 ; It ends in a ";" of its own, which stays at the end.
          IntPtrOp $1 $1 + 2
          System::Call '*$1(&i2 0)'
          System::Call 'kernel32::lstrcatW(p r7, w "$INSTDIR;;")'
        ${Else}
          System::Call 'kernel32::lstrcatW(p r7, w "$INSTDIR;")'
        ${EndIf}
      ${EndIf}
      Call WritePath
      WriteRegDWORD SHCTX "${UNINSTALL}" OnPath 1
    ${EndIf}
    Call ClosePath
  ${EndIf}
SectionEnd

Section /o "In the Explorer's menu of every file" SectionExplorer
  WriteRegStr SHCTX "${MENU}\Slyver.Split" "" "Split with Slyver"
  WriteRegStr SHCTX "${MENU}\Slyver.Split" Icon '"$INSTDIR\slyver.exe",0'
  WriteRegStr SHCTX "${MENU}\Slyver.Split\command" "" '"$INSTDIR\slyver.exe" --split %1'
  WriteRegStr SHCTX "${MENU}\Slyver.Hide" "" "Hide with Slyver ..."
  WriteRegStr SHCTX "${MENU}\Slyver.Hide" Icon '"$INSTDIR\slyver.exe",0'
  WriteRegStr SHCTX "${MENU}\Slyver.Hide\command" "" '"$INSTDIR\slyver.exe" --hide %1'
  !insertmacro TellExplorer
SectionEnd

Function .onInit
  !insertmacro MULTIUSER_INIT
  ${GetParameters} $0
  ClearErrors
  ${GetOptions} $0 "/PATH" $1
  ${IfNot} ${Errors}
    SectionSetFlags ${SectionPath} 1
  ${EndIf}
  ClearErrors
  ${GetOptions} $0 "/EXPLORER" $1
  ${IfNot} ${Errors}
    SectionSetFlags ${SectionExplorer} 1
  ${EndIf}
  ClearErrors
FunctionEnd

Function un.onInit
  !insertmacro MULTIUSER_UNINIT
FunctionEnd

Section Uninstall
  ReadRegDWORD $0 SHCTX "${UNINSTALL}" OnPath
  ${If} $0 = 1
    Call un.ReadPath
    ${If} $9 P<> 0
      ${If} $6 P<> 0
        StrLen $0 ";$INSTDIR"
        IntOp $0 $0 * 2
        IntPtrOp $1 $6 + $0
        System::Call 'kernel32::lstrlenW(p r1) i .r0'
        IntOp $0 $0 * 2
        IntOp $0 $0 + 2
        System::Call 'ntdll::RtlMoveMemory(p r6, p r1, p r0)'
        Call un.WritePath
      ${EndIf}
      Call un.ClosePath
    ${EndIf}
  ${EndIf}

  ; Another program may have taken the pieces over since.
  ReadRegStr $0 SHCTX "${EXTENSION}" ""
  ${If} $0 == "Slyver.Piece"
    ReadRegStr $1 SHCTX "${EXTENSION}" SlyverBefore
    ${If} $1 == ""
      DeleteRegValue SHCTX "${EXTENSION}" ""
    ${Else}
      WriteRegStr SHCTX "${EXTENSION}" "" $1
    ${EndIf}
  ${EndIf}
  DeleteRegValue SHCTX "${EXTENSION}" SlyverBefore
  DeleteRegKey /ifempty SHCTX "${EXTENSION}"
  DeleteRegKey SHCTX "${TYPE}"
  DeleteRegKey SHCTX "${MENU}\Slyver.Split"
  DeleteRegKey SHCTX "${MENU}\Slyver.Hide"
  DeleteRegKey /ifempty SHCTX "${MENU}"
  DeleteRegKey /ifempty SHCTX "Software\Classes\*"
  !insertmacro TellExplorer

  Delete "$SMPROGRAMS\Slyver.lnk"
  Delete "$INSTDIR\slyver.exe"
  Delete "$INSTDIR\sly.exe"
  Delete "$INSTDIR\Orm Valis Help.chm"
  Delete "$INSTDIR\uninstall.exe"
  RMDir $INSTDIR
  DeleteRegKey SHCTX "${UNINSTALL}"

  ${GetParameters} $0
  ClearErrors
  ${GetOptions} $0 "/KEEP" $1
  ${If} ${Errors}
    DeleteRegKey HKLM "Software\Orm Valis\Slyver"
    DeleteRegKey /ifempty HKLM "Software\Orm Valis"
    DeleteRegKey HKCU "Software\Orm Valis\Slyver"
    DeleteRegKey /ifempty HKCU "Software\Orm Valis"
  ${EndIf}
SectionEnd
