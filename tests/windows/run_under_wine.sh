#!/bin/sh
# Runs a Windows program in a Wine of its own: its own display, its own settings folder, both
# gone afterwards. Usage: run_under_wine.sh program.exe [arguments]
#   SCREENSHOT=file.png  takes a picture of the screen after SCREENSHOT_AFTER seconds (5)
#   SCREEN=1600x1200     size of the screen
#   DPI=96               what Wine tells its programs
set -eu
wine=$(command -v wine64 || command -v wine || echo /usr/lib/wine/wine64)
wineserver=$(command -v wineserver || echo /usr/lib/wine/wineserver)
folder=$(mktemp -d)
display=
finish() {
    status=$?
    trap - EXIT INT TERM
    WINEPREFIX="$folder/prefix" "$wineserver" -k 2>/dev/null || true
    WINEPREFIX="$folder/prefix" "$wineserver" -w 2>/dev/null || true
    if [ -n "$display" ]; then
        kill "$display" 2>/dev/null || true
        wait "$display" 2>/dev/null || true
    fi
    rm -rf "$folder"
    exit "$status"
}
trap finish EXIT INT TERM

# The server chooses a free display number and writes it to the pipe's end.
mkfifo "$folder/number"
Xvfb -displayfd 3 -screen 0 "${SCREEN:-1600x1200}x24" -nolisten tcp \
    3>"$folder/number" >/dev/null 2>&1 &
display=$!
read -r number <"$folder/number"
DISPLAY=":$number"
export DISPLAY
WINEPREFIX="$folder/prefix"
WINEDEBUG=${WINEDEBUG:--all}
WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe,winedbg.exe=d"
export WINEPREFIX WINEDEBUG WINEDLLOVERRIDES

# Without a window manager nothing places or frames windows but Wine itself.
cat >"$folder/settings.reg" <<REG
REGEDIT4

[HKEY_CURRENT_USER\\Software\\Wine\\X11 Driver]
"Managed"="N"

[HKEY_CURRENT_USER\\Control Panel\\Desktop]
"LogPixels"=dword:$(printf '%08x' "${DPI:-96}")
"ForegroundLockTimeout"=dword:00000000
REG
"$wine" wineboot -i >/dev/null 2>&1
"$wine" regedit /S "$folder/settings.reg" >/dev/null 2>&1

if [ -n "${SCREENSHOT:-}" ]; then
    "$wine" "$@" &
    program=$!
    sleep "${SCREENSHOT_AFTER:-5}"
    import -window root "$SCREENSHOT"
    wait "$program"
else
    "$wine" "$@"
fi
