# An option line with an empty value does not exist (measured)

  $ printf "config interface 'lan'\n\toption proto 'static'\n\toption gateway ''\n" > network
  $ uci get network.lan.gateway
  ! uci: Entry not found
  [1]
  $ uci delete network.lan.gateway
  ! uci: Entry not found
  [1]
  $ uci -q get network.lan.gateway
  [1]

# The next commit drops the empty line from the file (measured)

  $ printf "config interface 'lan'\n\toption proto 'static'\n\toption gateway ''\n" > network
  $ uci set network.lan.proto=dhcp
  $ uci commit network
  $ cat network
  |
  | config interface 'lan'
  | 	option proto 'dhcp'
  |

# An empty item of a list stays (measured)

  $ printf "config timeserver 'ntp'\n\tlist server ''\n\tlist server 'a'\n" > system
  $ uci get system.ntp.server
  |  a
  $ uci set system.ntp.enabled=1
  $ uci commit system
  $ cat system
  |
  | config timeserver 'ntp'
  | 	list server ''
  | 	list server 'a'
  | 	option enabled '1'
  |

# A list of one empty item is the only setting that is there and empty (source)

  $ printf "config timeserver 'ntp'\n\tlist server ''\n" > system
  $ uci get system.ntp.server
  |

# An empty line leaves an earlier value alone (source)

  $ printf "config interface 'lan'\n\toption proto 'static'\n\toption proto ''\n" > network
  $ uci get network.lan.proto
  | static

# An option without a value is an empty one (source)

  $ printf "config interface 'lan'\n\toption proto\n" > network
  $ uci show network
  | network.lan=interface
