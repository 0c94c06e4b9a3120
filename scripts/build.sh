# How the project is built by scripts, with what is being built shown. Sourced from the top folder.

# some_steps EVERY passes on, of the lines "[12/345] what" of its input, the first, the last and each EVERYth one; and
# all other lines.
some_steps() {
    local line
    while IFS= read -r line || [ -n "$line" ]; do
        if [[ $line =~ ^\[([0-9]+)/([0-9]+)\]\  ]]; then
            local step=${BASH_REMATCH[1]} last=${BASH_REMATCH[2]}
            [ "$step" -eq 1 ] || [ "$step" -eq "$last" ] || [ $((step % $1)) -eq 0 ] || continue
        fi
        printf '%s\n' "$line"
    done
}

# build PRESET [ARGUMENT...] configures and builds a preset; further arguments go to cmake --build. On a terminal Ninja
# keeps one line up to date, elsewhere it writes one for each of many hundred steps.
build() {
    local preset=$1
    shift
    cmake --preset "$preset" >/dev/null
    set -- cmake --build --preset "$preset" --parallel "$(nproc)" "$@"
    if [ -t 1 ] && [ "${TERM:-dumb}" != dumb ]; then "$@"; else "$@" | some_steps 50; fi
}
