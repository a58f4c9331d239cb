# Without a name it succeeds whatever happens: a file that does not parse is skipped (measured)

  $ printf "config interface 'lan'\n" > alpha
  $ printf "config interface 'lan'\n" > network
  $ printf "config interface 'lan'\n" > zulu
  $ uci set alpha.lan.proto=dhcp
  $ uci set network.lan.proto=dhcp
  $ uci set zulu.lan.proto=dhcp
  $ echo rubbish > network
  $ uci -q commit
  $ cat network
  | rubbish
  $ cat alpha zulu
  |
  | config interface 'lan'
  | 	option proto 'dhcp'
  |
  |
  | config interface 'lan'
  | 	option proto 'dhcp'
  |

# What was skipped is told without -q (source)

  $ echo rubbish > network
  $ uci commit
  ! (1 lines)
  $ uci changes
  ! (1 lines)

# With the name of a file that does not parse it fails (measured)

  $ echo rubbish > network
  $ uci -q commit network
  [1]

# So do the lists of changes: with a name only (measured)

  $ printf "config interface 'lan'\n" > alpha
  $ echo rubbish > network
  $ uci set alpha.lan.proto=dhcp
  $ uci -q changes
  | alpha.lan.proto='dhcp'
  $ uci -q changes network
  [1]

# Where the directory cannot be read, commit and changes fail (measured)

  $ uci -q -c ../nowhere commit
  [1]
  $ uci -q -c ../nowhere changes
  [1]

# A directory without a file is as good as none (source)

  $ uci commit
  ! uci: Entry not found
  [1]

# A read-only directory: nothing is written, the change stays staged, and only a name brings the failure (measured)

  $ printf "config interface 'lan'\n\toption proto 'static'\n" > network
  $ uci set network.lan.proto=dhcp
  $ mount --bind . . && mount -o remount,bind,ro .
  $ uci -q commit
  $ cat network
  | config interface 'lan'
  | 	option proto 'static'
  $ uci get network.lan.proto
  | dhcp
  $ uci -q commit network
  [1]
  $ uci changes
  | network.lan.proto='dhcp'

# Its name is said without -q (source)

  $ printf "config interface 'lan'\n" > network
  $ uci set network.lan.proto=dhcp
  $ mount --bind . . && mount -o remount,bind,ro .
  $ uci commit network
  ! uci: I/O error
  [1]

# A full disk: no failure even with the name, and an empty file (measured)

  $ mount -t tmpfs -o size=1 none .
  $ printf "config interface 'lan'\n" > network
  $ uci set network.lan.proto=dhcp
  $ uci commit network
  $ wc -c < network
  | 0

# The same without the name (measured)

  $ mount -t tmpfs -o size=1 none .
  $ printf "config interface 'lan'\n" > network
  $ uci set network.lan.proto=dhcp
  $ uci commit
  $ wc -c < network
  | 0

# The change is gone with it (source)

  $ mount -t tmpfs -o size=1 none .
  $ printf "config interface 'lan'\n" > network
  $ uci set network.lan.proto=dhcp
  $ uci commit network
  $ uci changes

# A section or option in the name: the whole configuration is committed (measured)

  $ printf "config interface 'lan'\n" > network
  $ uci set network.lan.proto=dhcp
  $ uci commit network.lan
  $ uci set network.lan.ipaddr=10.0.0.1
  $ uci commit network.lan.nothing
  $ cat network
  |
  | config interface 'lan'
  | 	option proto 'dhcp'
  | 	option ipaddr '10.0.0.1'
  |

# Nothing staged: the file keeps its comments (source)

  $ printf "# from the factory\nconfig interface 'lan'\n" > network
  $ uci commit network
  $ cat network
  | # from the factory
  | config interface 'lan'

# Other files beside it are none of its business (source)

  $ printf "config interface 'lan'\n" > network
  $ echo rubbish > network.bak
  $ echo rubbish > .hidden
  $ mkdir directory
  $ uci changes
