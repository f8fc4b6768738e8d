# Interface targets for the parts of wxWidgets each layer may use, read from
# wx-config, so every layer states exactly what it links:
#   Wx::Base  - wxBase + wxXML (the core)
#   Wx::Net   - wxNet (the desktop jobs)
#   Wx::Gui   - core, adv, aui, html, xml, net (the GUI layer)
find_program(WX_CONFIG_EXECUTABLE NAMES wx-config wx-config-3.2 REQUIRED)

function(cadrelle_wx_target name components)
  execute_process(COMMAND ${WX_CONFIG_EXECUTABLE} --cxxflags ${components}
                  OUTPUT_VARIABLE cflags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND ${WX_CONFIG_EXECUTABLE} --libs ${components}
                  OUTPUT_VARIABLE libs OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(cflags UNIX_COMMAND "${cflags}")
  # Whether a translation unit may use GUI classes is each target's own
  # choice (the core sets wxUSE_GUI=0 privately), not something to inherit.
  list(REMOVE_ITEM cflags "-DwxUSE_GUI=0")
  separate_arguments(libs UNIX_COMMAND "${libs}")
  add_library(${name} INTERFACE IMPORTED GLOBAL)
  set_target_properties(${name} PROPERTIES
    INTERFACE_COMPILE_OPTIONS "${cflags}"
    INTERFACE_LINK_LIBRARIES "${libs}")
endfunction()

cadrelle_wx_target(Wx::Base "base,xml")
cadrelle_wx_target(Wx::Net "base,net")
cadrelle_wx_target(Wx::Gui "std,aui,propgrid,richtext,xml,net")
