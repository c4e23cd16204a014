# A throw-away Wine prefix without a display: windows, messages and atoms work in it, and nothing
# outside its folder is touched.

wine_start() {
    wine_folder=$(mktemp -d "${TMPDIR:-/tmp}/qv-wine.XXXXXX") || return
    mkdir "$wine_folder/home"
    export WINEPREFIX=$wine_folder/prefix WINEARCH=win64 WINEDEBUG=-all
    # No offers to download run-time packages, no menu entries, no debugger on a crash.
    export WINEDLLOVERRIDES="mscoree,mshtml,winemenubuilder.exe,winedbg.exe="
    # What runs a Windows program in the prefix.
    wine=(env -u DISPLAY -u WAYLAND_DISPLAY "HOME=$wine_folder/home" wine)
    # The server reads the driver's name when it starts the desktop, so it is started anew.
    "${wine[@]}" reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f >"$wine_folder/log" 2>&1 &&
        wineserver -k && wineserver -w
}

wine_stop() {
    [ -n "${wine_folder:-}" ] || return 0
    wineserver -k || true
    wineserver -w || true
    rm -rf "$wine_folder"
    unset wine_folder
}
