# SPDX-License-Identifier: MIT
#
# What the stand-in sites deliver, and which emulator it is: `source demo/site.sh`.
# shellcheck shell=bash

# About 80 MB of it make the archive as large as a real one, so that its download takes a while.
readonly ballast_bytes=80000000

# ensure_runtime_folder FOLDER: what a login session would have set up for its programs, where there is none.
ensure_runtime_folder() {
    [[ -z ${XDG_RUNTIME_DIR:-} ]] || return 0
    mkdir -p "$1"
    chmod 700 "$1"
    export XDG_RUNTIME_DIR=$1
}

# make_game PROGRAM_FOLDER FILE
make_game() {
    if [[ ! $2 -nt $1/cartloom-make-rom ]]; then
        mkdir -p "$(dirname "$2")"
        "$1/cartloom-make-rom" "$2"
    fi
}

# make_archive EMULATOR ZIP: a release's archive for macOS, with that program in it.
make_archive() {
    local emulator=$1 archive=$2 work
    [[ ! $archive -nt $emulator ]] || return 0
    mkdir -p "$(dirname "$archive")"
    work=$(mktemp -d "$archive.XXXXXX")
    mkdir -p "$work/ares.app/Contents/MacOS" "$work/ares.app/Contents/Resources"
    cat >"$work/ares.app/Contents/Info.plist" <<'PLIST'
<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict>
    <key>CFBundleName</key>
    <string>ares</string>
    <key>CFBundleExecutable</key>
    <string>ares</string>
</dict>
</plist>
PLIST
    install -m 755 "$emulator" "$work/ares.app/Contents/MacOS/ares"
    # Noise, which no packing makes smaller.
    head -c "$ballast_bytes" /dev/urandom >"$work/ares.app/Contents/Resources/ballast"
    bsdtar --format zip --options zip:compression=store -C "$work" -cf "$work/archive.zip" ares.app
    mv "$work/archive.zip" "$archive"
    rm -rf "$work"
}

# Whether this machine has an Ares that plays Nintendo 64 games. It lists its systems without opening a
# window; the older ones, which do not know the option, would open one, and have no display for it here.
machine_plays_nintendo_64() {
    local listing
    command -v ares >/dev/null || return 1
    listing=$(env -u DISPLAY -u WAYLAND_DISPLAY timeout 10 ares --help 2>&1 </dev/null) || true
    [[ $listing == *"--system"* && $listing =~ (^|[ ,])"Nintendo 64"($|,) ]]
}

# make_machine_wrapper FOLDER: FOLDER/ares starts this machine's Ares with settings of its own.
make_machine_wrapper() {
    local program
    program=$(command -v ares)
    mkdir -p "$1"
    [[ -e $1/settings.bml ]] || printf 'Audio\n  Driver: None\n' >"$1/settings.bml"
    [[ -x $1/ares ]] || install -m 755 /dev/stdin "$1/ares" <<WRAPPER
#!/bin/sh
exec '$program' --settings-file '$1/settings.bml' "\$@"
WRAPPER
}
