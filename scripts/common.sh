# Shared by the repository's commands; to be sourced.
# shellcheck shell=bash

say() { printf '%s\n' "$*"; }

heading() { printf '\n== %s\n' "$*"; }

fail() {
    printf '%s\n' "$*" >&2
    exit 1
}

# run_step TITLE LOG COMMAND...: runs a long command into a log and shows where it is: on a terminal in one line that
# changes each second, elsewhere in a line every 20 seconds. When it fails, the end of the log is shown.
# The command has a process group of its own; a script that is ended calls end_step.
step_group=
run_step() {
    local title=$1 log=$2 started=$SECONDS pid status=0 last shown=0 every=20
    shift 2
    [[ -t 1 ]] && every=1
    mkdir -p "$(dirname "$log")"
    set -m
    "$@" > "$log" 2>&1 < /dev/null &
    pid=$!
    set +m
    step_group=$pid
    while kill -0 "$pid" 2> /dev/null; do
        sleep 0.2
        (( SECONDS - started >= shown + every )) || continue
        shown=$((SECONDS - started))
        last=$(tail -c 400 "$log" | tr '\r' '\n' | grep -v '^ *$' | tail -n 1 | cut -c 1-90 || true)
        if [[ -t 1 ]]; then
            printf '\r\033[K%s (%d s) %s' "$title" "$shown" "$last"
        else
            printf '%s (%d s) %s\n' "$title" "$shown" "$last"
        fi
    done
    wait "$pid" || status=$?
    step_group=
    [[ -t 1 ]] && printf '\r\033[K'
    if (( status == 0 )); then
        printf '%s: done in %d s\n' "$title" "$((SECONDS - started))"
    else
        printf '%s: failed with status %d; the end of %s:\n' "$title" "$status" "$log"
        tail -n 60 "$log"
    fi
    return "$status"
}

# Ends the step that is running, with all that it has started.
end_step() {
    if [[ -n $step_group ]]; then
        kill -s TERM -- "-$step_group" 2> /dev/null || true
        wait "$step_group" 2> /dev/null || true
        step_group=
    fi
}

# Makes an ordinary account of its own with a home folder; its name is printed.
make_account() {
    local name="wickfield$$"
    useradd --create-home --shell /bin/bash "$name" > /dev/null || return 1
    printf '%s\n' "$name"
}

# Lets such an account become root with a password of its own, which is printed.
make_administrator() {
    local name=$1 password
    password="demo $(od -An -N8 -tx1 /dev/urandom | tr -d ' \n')"
    printf '%s:%s\n' "$name" "$password" | chpasswd
    usermod --append --groups sudo "$name"
    printf '%s\n' "$password"
}

# Removes such an account with all that it left behind. Its last processes are given a moment to end.
remove_account() {
    local name=$1 uid
    uid=$(id -u "$name" 2> /dev/null) || return 0
    for signal in TERM KILL; do
        end_processes_of "$uid" "$signal"
    done
    find /tmp /var/tmp /dev/shm -xdev -user "$uid" -prune -exec rm -rf {} + 2> /dev/null || true
    userdel --remove "$name" > /dev/null 2>&1 || true
    rm -f "/run/sudo/ts/$name" "/var/lib/sudo/lectured/$name"
}

# Sends a signal to every process of a throw-away account, then waits up to two seconds for them to be gone.
end_processes_of() {
    local uid=$1 signal=$2 status try
    for (( try = 0; try < 20; ++try )); do
        local found=0
        for status in /proc/[0-9]*/status; do
            if [[ $(awk '/^Uid:/ { print $2 }' "$status" 2> /dev/null) == "$uid" ]]; then
                found=1
                (( try == 0 )) && kill -s "$signal" "$(basename "$(dirname "$status")")" 2> /dev/null
            fi
        done
        (( found )) || return 0
        sleep 0.1
    done
    return 0
}
