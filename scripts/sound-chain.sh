#!/usr/bin/env bash
# Starts and stops the real sound chain used by tests and demos on a machine with no sound
# card: a JACK server on its dummy backend and FluidSynth playing the General MIDI SoundFont,
# its audio on JACK and its MIDI input a JACK MIDI port.
#
#   sound-chain.sh start --state DIR [--server NAME]   start both, wait for the ports, return
#   sound-chain.sh stop  --state DIR                   stop what `start` started (by process id)
#   sound-chain.sh exec  [--state DIR] [--server NAME] -- COMMAND...
#                                                      start, run COMMAND, stop on exit
#   sound-chain.sh server-name --state DIR             print the JACK server name in use
#
# Clients reach the server through JACK_DEFAULT_SERVER, which `exec` exports; after `start`
# set it yourself to the printed name. Processes are tracked by the ids written into DIR,
# never looked up by name, so several chains (several worktrees, several test runs) can run
# side by side on differently named servers.
set -Eeuo pipefail

SOUNDFONT=${TG_SOUNDFONT:-/usr/share/sounds/sf2/FluidR3_GM.sf2}
# The sample rate of the server and the synth (TG_CHAIN_RATE, 44100 unless set).
RATE=${TG_CHAIN_RATE:-44100}
# Frames per period. A MIDI event and the start of a recording each land on a period
# boundary, so the period bounds how far a note can sit from where it was sent; 256 frames
# (5.8 ms) keeps recorded note starts within a few milliseconds of their time.
PERIOD=${TG_SOUND_CHAIN_PERIOD:-256}
WAIT_SECONDS=${TG_SOUND_CHAIN_TIMEOUT:-20}

usage() {
    sed -n '2,13p' "$0" | sed 's/^# \{0,1\}//' >&2
    exit 2
}

die() {
    echo "sound-chain: $*" >&2
    exit 1
}

state=""
server=""
command=${1:-}
[ -n "$command" ] || usage
shift
while [ $# -gt 0 ]; do
    case "$1" in
        --state) state=${2:?--state needs a folder}; shift 2 ;;
        --server) server=${2:?--server needs a name}; shift 2 ;;
        --) shift; break ;;
        *) [ "$command" = exec ] && break; usage ;;
    esac
done

# Stops the process whose id is stored in FILE, politely first, and forgets it.
stop_pid_file() {
    local file=$1 pid
    [ -f "$file" ] || return 0
    pid=$(cat "$file")
    if [ -n "$pid" ] && kill -0 "$pid" 2>/dev/null; then
        kill -TERM "$pid" 2>/dev/null || true
        for _ in $(seq 1 50); do
            kill -0 "$pid" 2>/dev/null || break
            sleep 0.1
        done
        kill -0 "$pid" 2>/dev/null && kill -KILL "$pid" 2>/dev/null || true
    fi
    rm -f "$file"
}

stop_chain() {
    # FluidSynth first: it is a client of the server and would otherwise complain.
    stop_pid_file "$state/fluidsynth.pid"
    stop_pid_file "$state/jackd.pid"
    rm -f "$state/fluidsynth.cmd"
}

# Waits until every port named in the arguments exists on the server, or fails.
wait_for_ports() {
    local deadline=$((SECONDS + WAIT_SECONDS)) ports missing
    while :; do
        ports=$(jack_lsp 2>/dev/null || true)
        missing=""
        for port in "$@"; do
            grep -qx "$port" <<<"$ports" || missing="$missing $port"
        done
        [ -z "$missing" ] && return 0
        [ $SECONDS -ge $deadline ] && { echo "sound-chain: ports missing:$missing" >&2; return 1; }
        sleep 0.2
    done
}

alive_or_fail() {
    local name=$1 file=$2 log=$3
    if ! kill -0 "$(cat "$file")" 2>/dev/null; then
        echo "sound-chain: $name exited; its log:" >&2
        tail -n 20 "$log" >&2 || true
        return 1
    fi
}

start_chain() {
    command -v jackd >/dev/null || die "jackd is not installed (scripts/install-deps.sh)"
    command -v fluidsynth >/dev/null || die "fluidsynth is not installed (scripts/install-deps.sh)"
    [ -r "$SOUNDFONT" ] || die "SoundFont not found: $SOUNDFONT"
    mkdir -p "$state"
    [ -f "$state/jackd.pid" ] && kill -0 "$(cat "$state/jackd.pid")" 2>/dev/null &&
        die "a chain is already running for $state (stop it first)"
    [ -n "$server" ] || server="tg-$(printf '%s' "$(cd "$state" && pwd)" | cksum | cut -d' ' -f1)"
    echo "$server" >"$state/server"
    export JACK_DEFAULT_SERVER=$server

    # Whatever fails from here on leaves nothing running behind.
    trap 'stop_chain' ERR INT TERM

    jackd --no-realtime -n "$server" -d dummy -r "$RATE" -p "$PERIOD" >"$state/jackd.log" 2>&1 &
    echo $! >"$state/jackd.pid"
    local deadline=$((SECONDS + WAIT_SECONDS))
    until jack_lsp >/dev/null 2>&1; do
        alive_or_fail jackd "$state/jackd.pid" "$state/jackd.log"
        [ $SECONDS -ge $deadline ] && { echo "sound-chain: jackd did not come up" >&2; false; }
        sleep 0.2
    done

    # FluidSynth's shell reads the FIFO; opening it read-write means it never sees an end
    # of input, so the synth stays up until it is stopped by its id.
    rm -f "$state/fluidsynth.cmd"
    mkfifo "$state/fluidsynth.cmd"
    # Reverb and chorus off: a dry synth falls silent as soon as its notes end, so one
    # take's tail never reaches the next take.
    fluidsynth -a jack -m jack -g 1.0 -r "$RATE" -R 0 -C 0 \
        -o audio.jack.id=fluidsynth -o midi.jack.id=fluidsynth \
        "$SOUNDFONT" <>"$state/fluidsynth.cmd" >"$state/fluidsynth.log" 2>&1 &
    echo $! >"$state/fluidsynth.pid"
    wait_for_ports fluidsynth:left fluidsynth:right fluidsynth:midi_00 ||
        { alive_or_fail fluidsynth "$state/fluidsynth.pid" "$state/fluidsynth.log" || true; false; }
    trap - ERR INT TERM
    echo "$server"
}

case "$command" in
    start)
        [ -n "$state" ] || usage
        start_chain
        ;;
    stop)
        [ -n "$state" ] || usage
        stop_chain
        ;;
    server-name)
        [ -n "$state" ] || usage
        cat "$state/server"
        ;;
    exec)
        [ $# -gt 0 ] || usage
        own_state=""
        if [ -z "$state" ]; then
            state=$(mktemp -d)
            own_state=$state
        fi
        start_chain >/dev/null
        trap 'stop_chain; [ -n "$own_state" ] && rm -rf "$own_state"' EXIT
        export JACK_DEFAULT_SERVER=$server
        "$@"
        ;;
    *)
        usage
        ;;
esac
