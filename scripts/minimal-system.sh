# SPDX-License-Identifier: MIT
# shellcheck shell=sh disable=SC2154
#
# To be sourced. Makes a minimal Debian to try things in: $release below $folder, with its root in
# $root, from the mirror that this machine's own apt uses. The caller has say and fail.

# Debian's own archive among the sources of this machine's apt.
# shellcheck disable=SC2016 # apt's own fields
find_mirror() {
  mirror=$(apt-get indextargets --format '$(REPO_URI) $(COMPONENT) $(RELEASE) $(ORIGIN)' \
    'Created-By: Packages' | awk '$2 == "main" && $3 !~ /[-\/]/ && $4 == "Debian" { print $1; exit }')
  [ -n "$mirror" ] || fail "apt knows no mirror of Debian here; try apt-get update"
}

# How this machine reaches its mirror, for debootstrap and for the new system's apt.
copy_access() {
  proxy=
  eval "$(apt-config shell proxy Acquire::http::Proxy)"
  [ -z "$proxy" ] || [ "$proxy" = DIRECT ] || export http_proxy="$proxy"
  access=$folder/apt.conf
  apt-config dump --no-empty |
    grep -E '^Acquire::(https?::|Check-Valid-Until|Check-Date|ForceIPv4|Retries)' > "$access" || true
  [ -n "$proxy" ] || [ -z "${http_proxy:-}" ] ||
    echo "Acquire::http::Proxy \"$http_proxy\";" >> "$access"
}

# make_system: into $root, unless $reuse is set and there is one.
make_system() {
  if [ -n "$reuse" ] && [ -f "$folder/complete" ]; then
    say "goes on with the system that was kept"
    return
  fi
  rm -rf --one-file-system "$root" "$folder/complete"
  say "making a minimal system"
  include=
  case $mirror in https:*) include=--include=ca-certificates ;; esac
  # shellcheck disable=SC2086 # an option or none
  debootstrap --variant=minbase $include "$release" "$root" "$mirror" \
    > "$folder/debootstrap.log" 2>&1 || { tail -n 20 "$folder/debootstrap.log" >&2; return 1; }
  cp "$access" "$root/etc/apt/apt.conf.d/00access"
  chroot "$root" useradd --create-home --shell /bin/sh builder
  touch "$folder/complete"
}

# The root is a mount itself: where it is none, nobody below can have mounts apart.
mount_system() {
  umount "$root/proc" 2>/dev/null || true  # debootstrap may have left one
  mount --bind "$root" "$root"
  mount -t proc proc "$root/proc"
  mkdir -p "$root/dev/pts" "$root/dev/shm"
  mount -t devpts -o newinstance,ptmxmode=0666,mode=0620 devpts "$root/dev/pts"
  mount -t tmpfs -o mode=1777 tmpfs "$root/dev/shm"
}

# within USER FOLDER COMMANDS: as that user would after logging in, with no terminal to ask.
within() {
  home=$(chroot "$root" sh -c "echo ~$1")
  # shellcheck disable=SC2016 # expanded in the new system
  setsid --wait chroot --userspec="$1" "$root" env -i HOME="$home" USER="$1" LOGNAME="$1" \
    PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
    sh -euc 'cd "$1"; eval "$2"' sh "$2" "$3" < /dev/null
}

# run_apart: the calling script with the argument --apart, in namespaces that end with this script.
run_apart() {
  unshare --mount --propagation private --pid --fork --kill-child "$0" --apart &
  apart=$!
  trap 'kill -KILL "$apart" 2>/dev/null || true' EXIT
  trap 'echo "${0##*/}: interrupted" >&2; exit 130' INT TERM HUP
  status=0
  wait "$apart" || status=$?
  trap - EXIT INT TERM HUP
  return "$status"
}
