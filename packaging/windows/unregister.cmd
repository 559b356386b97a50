@echo off
rem Undoes what "register.cmd" has done.
setlocal
set "classes=HKCU\Software\Classes"
set "before="
for /f "tokens=2,*" %%a in ('reg query "%classes%\.sly" /v SlyverBefore 2^>nul ^| findstr REG_SZ') do set "before=%%b"
reg query "%classes%\.sly" /ve 2>nul | findstr /c:"Slyver.Piece" >nul || goto piece
if defined before (
  reg add "%classes%\.sly" /ve /t REG_SZ /d "%before%" /f >nul
  reg delete "%classes%\.sly" /v SlyverBefore /f >nul
) else (
  reg delete "%classes%\.sly" /f >nul
)
:piece
reg delete "%classes%\Slyver.Piece" /f >nul 2>&1
echo .sly pieces no longer open with Slyver.
exit /b 0
