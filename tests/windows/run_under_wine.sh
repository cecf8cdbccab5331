#!/bin/sh
# Runs a Windows program in a Wine of its own: its own display, its own settings folder, both
# gone afterwards. Usage: run_under_wine.sh program.exe [arguments]
#   SCREENSHOT=file.png  takes a picture of the screen after SCREENSHOT_AFTER seconds (5)
#   SCREEN=1600x1200     size of the screen
#   DPI=96               what Wine tells its programs
#   MANAGER=openbox      a window manager on that screen; usually there is none
#   WINE_TEMPLATE=...    where the ready settings folder lies that each run copies (build/wine)
set -eu
wine=$(command -v wine64 || command -v wine || echo /usr/lib/wine/wine64)
wineserver=$(command -v wineserver || echo /usr/lib/wine/wineserver)
root=$(cd "$(dirname "$0")/../.." && pwd -P)
template=${WINE_TEMPLATE:-$root/build/wine}
folder=$(mktemp -d)
display=
manager=
finish() {
    status=$?
    trap - EXIT INT TERM
    for prefix in "$folder/prefix" "$folder/fresh"; do
        if [ -d "$prefix" ]; then
            WINEPREFIX="$prefix" "$wineserver" -k 2>/dev/null || true
            WINEPREFIX="$prefix" "$wineserver" -w 2>/dev/null || true
        fi
    done
    for server in $manager $display; do
        kill "$server" 2>/dev/null || true
        wait "$server" 2>/dev/null || true
    done
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
WINEPREFIX="$folder/prefix"
WINEDEBUG=${WINEDEBUG:--all}
WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe,winedbg.exe=d"
export DISPLAY WINEPREFIX WINEDEBUG WINEDLLOVERRIDES

# A settings folder takes ten seconds to make, and is the same for every run: the first run makes
# it, others that begin meanwhile wait for it. Another Wine makes another one.
make_template() {
    made="$("$wine" --version) $root"
    [ "$(cat "$template/made" 2>/dev/null)" != "$made" ] || return 0
    WINEPREFIX="$folder/fresh" "$wine" wineboot -i >/dev/null 2>&1
    # What is still in memory is written when the last program of that folder has ended.
    WINEPREFIX="$folder/fresh" "$wineserver" -k >/dev/null 2>&1 || true
    WINEPREFIX="$folder/fresh" "$wineserver" -w
    rm -rf "$template/prefix" "$template/made"
    mv "$folder/fresh" "$template/prefix"
    echo "$made" >"$template/made"
}
mkdir -p "$template" 2>/dev/null || { template=$folder/template && mkdir "$template"; }
(
    flock 9
    make_template
    # Thousands of files that nobody writes to need no copy of their own; the settings do.
    cp -al "$template/prefix" "$WINEPREFIX" 2>/dev/null || {
        rm -rf "$WINEPREFIX"
        cp -a "$template/prefix" "$WINEPREFIX"
    }
    for file in "$WINEPREFIX"/*.reg "$WINEPREFIX"/.update-timestamp; do
        cp -a --remove-destination "$template/prefix/${file##*/}" "$file"
    done
) 9>"$template/lock"

# Without a window manager nothing places or frames windows but Wine itself.
managed=N
if [ -n "${MANAGER:-}" ]; then
    managed=Y
    "$MANAGER" >/dev/null 2>&1 &
    manager=$!
fi
cat >"$folder/settings.reg" <<REG
REGEDIT4

[HKEY_CURRENT_USER\\Software\\Wine\\X11 Driver]
"Managed"="$managed"

[HKEY_CURRENT_USER\\Control Panel\\Desktop]
"LogPixels"=dword:$(printf '%08x' "${DPI:-96}")
"ForegroundLockTimeout"=dword:00000000
REG
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
