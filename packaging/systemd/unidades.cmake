# What the units of the nightly download share. Each runs with what it needs and no more.
set(TELVANE_UNIDAD_PROPIA [[User=telvane
Group=telvane
SupplementaryGroups=dialout
UMask=0022
# A download takes two minutes and twenty seconds; a station's is tried again until the morning.
TimeoutStartSec=14h
Nice=10
IOSchedulingClass=idle]])
set(TELVANE_UNIDAD_ENCERRADA [[NoNewPrivileges=yes
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
# Of a station's unit; the single-station one goes on taking whatever port it took.
set(TELVANE_UNIDAD_PUERTOS [[# Serial ports, whoever drives them, and no other device.
DevicePolicy=closed
DeviceAllow=char-tty* rw
ProtectHome=read-only]])
set(TELVANE_UNIDAD_SIN_RED [[PrivateNetwork=yes
IPAddressDeny=any
RestrictAddressFamilies=AF_UNIX
Environment=TELVANE_RED=no]])

# telvane_unidad(NAME SOURCE): configured into the build's folder and installed.
function(telvane_unidad nombre origen)
  configure_file(systemd/${origen}.in ${nombre} @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${nombre} DESTINATION ${TELVANE_DIR_SYSTEMD})
endfunction()
