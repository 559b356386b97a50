@echo off
rem Undoes what "register.cmd" has done.
setlocal
set "extension=HKCU\Software\Classes\.sly"

rem Another program may have taken the pieces over since.
reg query "%extension%" /ve 2>nul | find "Slyver.Piece" >nul
if errorlevel 1 goto type
reg query "%extension%" /v SlyverBefore >nul 2>&1
if not errorlevel 1 goto before
reg query "%extension%" /v SlyverMade >nul 2>&1
if errorlevel 1 (
  reg delete "%extension%" /ve /f >nul
) else (
  reg delete "%extension%" /f >nul
)
goto type

:before
for /f "tokens=2,*" %%a in ('reg query "%extension%" /v SlyverBefore') do set "before=%%b"
reg add "%extension%" /ve /t REG_SZ /d "%before%" /f >nul
reg delete "%extension%" /v SlyverBefore /f >nul
reg delete "%extension%" /v SlyverMade /f >nul 2>&1

:type
reg delete "HKCU\Software\Classes\Slyver.Piece" /f >nul 2>&1
echo .sly pieces no longer open with Slyver.
exit /b 0
