# SPDX-License-Identifier: MIT
# shellcheck shell=sh
#
# To be sourced, behind scripts/simulator.sh. Runs an etcd of one member for as long as the script
# lives, and publishers to it.

# start_etcd: on free ports of loopback. Sets $etcd_url, and $etcd_folder with etcd and etcdctl. Ends
# the script with 77 where etcd cannot be had.
start_etcd() {
  etcd_folder=$(scripts/etcd) || exit $?
  etcd_data=$(mktemp -d)
  processes=
  trap stop_fleet EXIT
  trap 'exit 1' INT TERM
  # etcd cannot say which free port it took: another program may have it by then.
  for _ in 1 2 3 4 5; do
    port=$((20000 + $(od -An -N2 -tu2 /dev/urandom) % 20000))
    etcd_url=http://127.0.0.1:$port
    peer=http://127.0.0.1:$((port + 1))
    "$etcd_folder/etcd" --data-dir "$etcd_data/member" --log-level error \
      --listen-client-urls "$etcd_url" --advertise-client-urls "$etcd_url" \
      --listen-peer-urls "$peer" --initial-advertise-peer-urls "$peer" \
      --initial-cluster "default=$peer" > "$etcd_data/log" 2>&1 &
    etcd=$!
    for _ in 1 2 3 4 5 6 7 8 9 10; do
      sleep 0.3
      kill -0 "$etcd" 2>/dev/null || continue 2
      if "$etcd_folder/etcdctl" --endpoints "$etcd_url" get ready > "$etcd_data/ready" 2>&1; then
        processes=$etcd
        return
      fi
    done
    kill "$etcd" 2>/dev/null || true
  done
  cat "$etcd_data/log" >&2
  exit 1
}

# start_site NAME ARGUMENT...: a simulated daemon with these arguments, and its publisher.
start_site() {
  site=$1
  shift
  mkdir -p "$etcd_data/$site"
  simulator_folder=$etcd_data/$site
  : > "$simulator_folder/output"
  build/release/simulator/kecpp-mgmtd-sim --listen-port 0 --ticket-dir "$simulator_folder" "$@" \
    > "$simulator_folder/output" 2>&1 &
  simulator=$!
  processes="$processes $simulator"
  await_simulator
  # shellcheck disable=SC2154 # await_simulator sets it
  write_config "$url" > "$simulator_folder/config.xml"
  build/release/tools/publish/kecpp-publish --config "$simulator_folder/config.xml" --site "$site" \
    --to "$etcd_url" 2> "$simulator_folder/publisher" &
  processes="$! $processes"
}

# The publishers first: they say goodbye to the cluster.
stop_fleet() {
  for process in $processes; do
    kill "$process" 2>/dev/null || true
    wait "$process" 2>/dev/null || true
  done
  rm -rf "$etcd_data"
}
