// SPDX-License-Identifier: MIT
#include "config/DefaultConfig.h"

namespace KE::Service {

const char* const DEFAULT_CONFIG_CONTENT =
    R"(<?xml version="1.0" encoding="UTF-8"?>
<Config>
   <SSLInfo>
      <certFile>/etc/zorbel/ssl/rui.crt</certFile>
      <passPhrase/>
      <keyFile>/etc/zorbel/ssl/rui.key</keyFile>
      <CACertFile>/etc/zorbel/ssl/rui.crt</CACertFile>
   </SSLInfo>
   <ConnectionInfo>
      <url>http://localhost/sdk/pxaService</url>
      <proto/>
      <host/>
      <port/>
      <path/>
      <proxyHost/>
      <proxyPort/>
      <timeout>60</timeout>
      <verboseHttpLogging>false</verboseHttpLogging>
   </ConnectionInfo>
   <LoginInfo>
      <localTicket>true</localTicket>
      <userName>root</userName>
      <password></password>
   </LoginInfo>
   <LogInfo>
      <level>verbose</level>
   </LogInfo>
</Config>
)";

}  // namespace KE::Service
