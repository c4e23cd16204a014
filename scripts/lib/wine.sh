# Wine prefixes without a display: windows, messages and atoms work in them, and nothing outside their
# folder is touched.

# Makes the prefix in the folder, unless it is there. Sets the array `wine`: the command that runs a Windows program.
wine_use() {
    local folder=$1
    mkdir -p "$folder/home" || return
    export WINEPREFIX=$folder/prefix WINEARCH=win64 WINEDEBUG=-all
    # No offers to download run-time packages, no menu entries, no debugger on a crash.
    export WINEDLLOVERRIDES="mscoree,mshtml,winemenubuilder.exe,winedbg.exe="
    wine=(env -u DISPLAY -u WAYLAND_DISPLAY "HOME=$folder/home" wine)
    [ ! -e "$folder/made" ] || return 0
    # The server reads the driver's name when it starts the desktop. So start it anew.
    "${wine[@]}" reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f >"$folder/log" 2>&1 &&
        wineserver -k && wineserver -w && touch "$folder/made"
}

# A throw-away prefix, until wine_stop.
wine_start() {
    wine_folder=$(mktemp -d "${TMPDIR:-/tmp}/qv-wine.XXXXXX") && wine_use "$wine_folder"
}

wine_stop() {
    [ -n "${wine_folder:-}" ] || return 0
    wineserver -k || true
    wineserver -w || true
    rm -rf "$wine_folder"
    unset wine_folder
}
