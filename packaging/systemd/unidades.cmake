# What the units of the nightly download share. Each runs with what it needs and no more.
set(TELVANE_UNIDAD_PROPIA [[User=telvane
Group=telvane
SupplementaryGroups=dialout
UMask=0022
# A download takes two minutes and twenty seconds; a station's is tried again until the morning.
TimeoutStartSec=14h
Nice=10
IOSchedulingClass=idle]])
set(TELVANE_UNIDAD_ENCERRADA [[# Serial ports and no other device.
DevicePolicy=closed
DeviceAllow=char-ttyS rw
DeviceAllow=char-ttyUSB rw
DeviceAllow=char-ttyACM rw
NoNewPrivileges=yes
CapabilityBoundingSet=
LockPersonality=yes
MemoryDenyWriteExecute=yes
PrivateTmp=yes
ProcSubset=pid
ProtectClock=yes
ProtectControlGroups=yes
ProtectHostname=yes
ProtectKernelLogs=yes
ProtectKernelModules=yes
ProtectKernelTunables=yes
ProtectProc=invisible
ProtectSystem=full
RemoveIPC=yes
RestrictNamespaces=yes
RestrictRealtime=yes
RestrictSUIDSGID=yes
SystemCallArchitectures=native
SystemCallFilter=@system-service
SystemCallFilter=~@privileged @resources
SystemCallErrorNumber=EPERM]])
set(TELVANE_UNIDAD_SIN_RED [[PrivateNetwork=yes
IPAddressDeny=any
RestrictAddressFamilies=AF_UNIX
Environment=TELVANE_RED=no]])

# telvane_unidad(NAME SOURCE): configured into the build's folder and installed.
function(telvane_unidad nombre origen)
  configure_file(systemd/${origen}.in ${nombre} @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${nombre} DESTINATION ${TELVANE_DIR_SYSTEMD})
endfunction()
