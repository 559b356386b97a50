@echo off
rem Lets Windows open .sly pieces with the slyver.exe that lies beside this script; for this user.
rem "unregister.cmd" undoes it.
setlocal
set "program=%~dp0slyver.exe"
if not exist "%program%" (
  echo slyver.exe does not lie beside this script.
  exit /b 1
)
set "extension=HKCU\Software\Classes\.sly"
set "type=HKCU\Software\Classes\Slyver.Piece"

rem What opened the pieces until now is kept, so that it can come back.
reg query "%extension%" >nul 2>&1
if errorlevel 1 reg add "%extension%" /v SlyverMade /t REG_SZ /d 1 /f >nul
set "line="
for /f "delims=" %%l in ('reg query "%extension%" /ve 2^>nul') do set "line=%%l"
set "before="
if defined line for /f "tokens=*" %%v in ("%line:*REG_SZ=%") do set "before=%%v"
rem Where there is no value, a remark in parentheses, or nothing but the key, stands in its place.
if defined before if "%before:~0,1%"=="(" set "before="
if "%before%"=="%line%" set "before="
if /i "%before%"=="Slyver.Piece" set "before="
if defined before reg add "%extension%" /v SlyverBefore /t REG_SZ /d "%before%" /f >nul

rem Between the inner quotation marks an ampersand would end the command.
set "escaped=%program:&=^&%"
reg add "%extension%" /ve /t REG_SZ /d Slyver.Piece /f >nul
if errorlevel 1 goto failed
reg add "%type%" /ve /t REG_SZ /d "Sly File" /f >nul
if errorlevel 1 goto failed
reg add "%type%\DefaultIcon" /ve /t REG_SZ /d "\"%escaped%\",0" /f >nul
if errorlevel 1 goto failed
rem The program takes all that follows its name for the path, blanks included.
reg add "%type%\shell\open\command" /ve /t REG_SZ /d "\"%escaped%\" %%1" /f >nul
if errorlevel 1 goto failed
echo .sly pieces now open with "%program%".
exit /b 0

:failed
echo The registry could not be written.
exit /b 1
