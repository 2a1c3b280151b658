@echo off
rem Proves the library on this machine, see README.txt.
"%~dp0selftest.exe" %*
set RESULT=%ERRORLEVEL%
if "%~1"=="" pause
exit /b %RESULT%
