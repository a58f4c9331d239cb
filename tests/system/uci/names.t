# Anonymous sections are called cfg, two hexadecimal digits of the index and four of a hash (measured)

  $ printf "config system\n\toption hostname 'card1'\n" > system
  $ uci set system.@system[0].hostname=card2
  $ uci changes | sed 's/[0-9a-f]\{4\}[.]/HASH./'
  | system.cfg01HASH.hostname='card2'

# The index counts all sections, and the hash is that of the type (source)

  $ printf "config timeserver 'ntp'\nconfig system\n" > system
  $ uci set system.@system[0].hostname=card2
  $ uci changes
  | system.cfg02e48a.hostname='card2'

# An anonymous section is shown by type and index, and by its generated name when its type is staged (measured)

  $ printf "config interface\n\toption proto 'dhcp'\n" > network
  $ uci show
  | network.@interface[0]=interface
  | network.@interface[0].proto='dhcp'
  $ uci set network.@interface[0]=bridge
  $ uci show | sed 's/[0-9a-f]\{4\}\([.=]\)/HASH\1/'
  | network.cfg01HASH=bridge
  | network.cfg01HASH.proto='dhcp'

# From then on the name is its own, unless the new type is as long as the old one (source)

  $ printf "config interface\nconfig interface\n" > network
  $ uci set network.@interface[0]=bridge
  $ uci set network.@interface[-1]=infernals
  $ uci commit
  $ cat network
  |
  | config bridge 'cfg016d96'
  |
  | config infernals
  |

# Shown alone, a section always has its generated name (source)

  $ printf "config system\n\toption hostname 'card1'\n" > system
  $ uci show system.@system[0]
  | system.cfg01e48a=system
  | system.cfg01e48a.hostname='card1'
  $ uci show system.@system[-1].hostname
  | system.cfg01e48a.hostname='card1'
  $ uci get system.cfg01e48a.hostname
  | card1
