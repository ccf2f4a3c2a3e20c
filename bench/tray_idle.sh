#!/usr/bin/env bash
# What the program costs while it lives in the tray. It runs under Xvfb with a temporary home,
# a private session bus and bench/tray_host.py as the panel's watcher (no real panel can run
# here; the stand-in only owns org.kde.StatusNotifierWatcher and says a host is registered).
# Reported: resident memory (VmRSS) and CPU with the window open and idle, then after the
# window is closed (only the tray and its status left), the closed figure against the 80 MB
# goal, and the CPU ticks (1/100 s) used between two minute ticks with the window closed.
#   bench/tray_idle.sh [BUILD_DIR]
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${1:-$root/build}"
app="$build/src/app/brimvale"
work=$(mktemp -d)
pids=()
cleanup() { for p in "${pids[@]}"; do kill "$p" 2>/dev/null || true; done; rm -rf "$work"; }
trap cleanup EXIT
export HOME="$work/home" XDG_DATA_HOME="$work/home/data" XDG_CONFIG_HOME="$work/home/config"
export XDG_STATE_HOME="$work/home/state" XDG_RUNTIME_DIR="$work/run" XDG_CACHE_HOME="$work/home/cache"
mkdir -p "$HOME/Desktop" "$HOME/Downloads" "$XDG_RUNTIME_DIR" && chmod 700 "$XDG_RUNTIME_DIR"
# First run is done: the onboarding sheet would otherwise be what stays open.
mkdir -p "$XDG_DATA_HOME/Brimvale"

display=":$(( 90 + RANDOM % 100 ))"
Xvfb "$display" -screen 0 1600x1000x24 -nolisten tcp >/dev/null 2>&1 & pids+=($!)
export DISPLAY="$display"
bus=$(dbus-daemon --session --fork --print-address=1 --print-pid=1)
export DBUS_SESSION_BUS_ADDRESS=$(echo "$bus" | sed -n 1p); pids+=("$(echo "$bus" | sed -n 2p)")
/usr/bin/python3 "$root/bench/tray_host.py" watcher >"$work/watcher.log" 2>&1 & pids+=($!)
sleep 1

rss() { awk '/^VmRSS/ {print $2}' "/proc/$1/status"; }            # kB
cpu() { awk '{print $14 + $15}' "/proc/$1/stat"; }                 # clock ticks
hz=$(getconf CLK_TCK)

"$app" >"$work/app.log" 2>&1 & app_pid=$!; pids+=($app_pid)
started=$(date +%s)
sleep 25 # start-up scans and the first frame settle
grep -q registered "$work/watcher.log" || { echo "the tray item never registered"; cat "$work/app.log"; exit 1; }

# The minute ticks fall at started+60k; each window below sits between two of them.
wait_after_tick() { local now; now=$(date +%s); sleep $(( 60 - (now - started) % 60 + 4 )); }
measure() { # seconds -> "rss_kB ticks"
    local c0 c1; c0=$(cpu "$app_pid"); sleep "$1"; c1=$(cpu "$app_pid"); echo "$(rss "$app_pid") $((c1 - c0))"
}
wait_after_tick
read -r open_rss open_ticks < <(measure 50)

/usr/bin/python3 "$root/bench/tray_host.py" close Brimvale >/dev/null
sleep 3
kill -0 "$app_pid" 2>/dev/null || { echo "closing the window ended the program"; exit 1; }
wait_after_tick
read -r closed_rss closed_ticks < <(measure 50)

awk -v o="$open_rss" -v ot="$open_ticks" -v c="$closed_rss" -v ct="$closed_ticks" -v hz="$hz" 'BEGIN {
    printf "window open, idle:   %6.1f MB resident, %.3f %% of a core (%d ticks in 50 s)\n", o/1024, 100*ot/hz/50, ot
    printf "window closed, tray: %6.1f MB resident, %.3f %% of a core (%d ticks in 50 s between minute ticks)\n", c/1024, 100*ct/hz/50, ct
    printf "closed / 80 MB goal: %.2f\n", c/1024/80
    printf "closed / open:       %.2f\n", c/o
}'
