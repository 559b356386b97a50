@echo off
rem Lets Windows open .sly pieces with the slyver.exe that lies beside this script; for this user.
rem "unregister.cmd" undoes it.
setlocal
set "program=%~dp0slyver.exe"
if not exist "%program%" (
  echo slyver.exe does not lie beside this script.
  exit /b 1
)
set "classes=HKCU\Software\Classes"
rem What opened the pieces until now is kept, so that it can come back.
for /f "tokens=2,*" %%a in ('reg query "%classes%\.sly" /ve 2^>nul ^| findstr REG_SZ') do (
  if /i not "%%b"=="Slyver.Piece" reg add "%classes%\.sly" /v SlyverBefore /t REG_SZ /d "%%b" /f >nul
)
reg add "%classes%\.sly" /ve /t REG_SZ /d Slyver.Piece /f >nul || goto failed
reg add "%classes%\Slyver.Piece" /ve /t REG_SZ /d "Sly File" /f >nul || goto failed
reg add "%classes%\Slyver.Piece\DefaultIcon" /ve /t REG_SZ /d "\"%program%\",0" /f >nul || goto failed
rem The program takes all that follows its name for the path, blanks included.
reg add "%classes%\Slyver.Piece\shell\open\command" /ve /t REG_SZ /d "\"%program%\" %%1" /f >nul || goto failed
echo .sly pieces now open with "%program%".
exit /b 0
:failed
echo The registry could not be written.
exit /b 1
