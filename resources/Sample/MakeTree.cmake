# Makes the sample's mirror tree: cmake -DPLUGIN=… -DVERSION=… -DARCHITECTURE=… -DSOURCE=… -DOUTPUT=… -P MakeTree.cmake
# Everything lies under the placeholder home folder, so that an ordinary user can install all of it.
cmake_minimum_required(VERSION 3.25)

set(home "${OUTPUT}/Users/user")
set(support "${home}/Library/Application Support/Orrin Audio/Larkspur Reverb")
set(plugins "${home}/Library/Audio/Plug-Ins")
set(executable OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

file(REMOVE_RECURSE "${OUTPUT}")

# A plug-in package with the shared library, a description, and a versioned resource folder behind a link.
function(make_package path identifier)
    get_filename_component(name "${path}" NAME_WE)
    file(COPY "${PLUGIN}" DESTINATION "${path}/Contents/${ARCHITECTURE}")
    get_filename_component(library "${PLUGIN}" NAME)
    file(RENAME "${path}/Contents/${ARCHITECTURE}/${library}" "${path}/Contents/${ARCHITECTURE}/${name}.so")
    file(WRITE "${path}/Contents/Info.plist"
"<?xml version=\"1.0\" encoding=\"UTF-8\"?>
<plist version=\"1.0\">
<dict>
    <key>CFBundleIdentifier</key>
    <string>${identifier}</string>
    <key>CFBundleName</key>
    <string>${name}</string>
    <key>CFBundleVersion</key>
    <string>${VERSION}</string>
    <key>CFBundlePackageType</key>
    <string>BNDL</string>
</dict>
</plist>
")
    file(WRITE "${path}/Contents/Resources/Versions/${VERSION}/About.txt" "${name} ${VERSION}, Orrin Audio\n")
    file(CREATE_LINK "${VERSION}" "${path}/Contents/Resources/Versions/Current" SYMBOLIC)
    file(CREATE_LINK "Versions/Current/About.txt" "${path}/Contents/Resources/About.txt" SYMBOLIC)
endfunction()

function(make_preset folder name index)
    math(EXPR decay "10 + (${index} * 37) % 590")
    math(EXPR damping "(${index} * 53) % 100")
    math(EXPR mix "15 + (${index} * 29) % 70")
    math(EXPR seconds "${decay} / 100")
    math(EXPR hundredths "${decay} % 100")
    foreach(value hundredths damping mix)
        if(${value} LESS 10)
            set(${value} "0${${value}}")
        endif()
    endforeach()
    file(WRITE "${support}/Presets/${folder}/${name}.larkspur"
         "name = ${name}\ndecay = ${seconds}.${hundredths}\ndamping = 0.${damping}\nmix = 0.${mix}\n")
endfunction()

function(make_presets)
    string(ASCII 204 129 acute)  # a combining accent, so that one name is in decomposed form
    string(REPEAT "ö" 119 umlauts)
    string(REPEAT "long " 48 words)
    set(folders Halls Rooms Plates Chambers Cathedrals Springs Nebenräume 残響)
    set(odd "Café Ænigma" "Cafe${acute} decomposed" "🌲 Waldlichtung" "Тёмный зал" "静かな部屋" "Ümläut & 'Quotes'"
            "${words}naming" "${umlauts} 2 bytes")
    set(shades Amber Birch Cobalt Dusk Ember Fern Granite Hazel Indigo Juniper Kelp Linen Moss Nettle Ochre Pewter Quartz)
    set(index 0)
    foreach(folder IN LISTS folders)
        foreach(name IN LISTS odd shades)
            make_preset("${folder}" "${name}" ${index})
            math(EXPR index "${index} + 1")
        endforeach()
        file(WRITE "${support}/Presets/${folder}/.DS_Store" "Left behind by a file browser; never installed.\n")
    endforeach()
    if(NOT index EQUAL 200)
        message(FATAL_ERROR "The sample has ${index} presets")
    endif()
endfunction()

make_package("${plugins}/VST3/Larkspur Reverb.vst3" com.orrinaudio.larkspur-reverb.vst3)
make_package("${plugins}/Components/Larkspur Reverb.component" com.orrinaudio.larkspur-reverb.component)
make_package("${plugins}/CLAP/Larkspur Reverb.clap" com.orrinaudio.larkspur-reverb.clap)
make_presets()

file(COPY_FILE "${SOURCE}/Tree/larkspur-presets" "${support}/larkspur-presets")
file(CHMOD "${support}/larkspur-presets" PERMISSIONS ${executable})

file(MAKE_DIRECTORY "${home}/Library/Preferences" "${home}/Documents/Orrin Audio")
file(COPY_FILE "${SOURCE}/Tree/Preferences.plist" "${home}/Library/Preferences/com.orrinaudio.larkspur-reverb.plist")
file(COPY_FILE "${SOURCE}/Tree/Manual.html" "${home}/Documents/Orrin Audio/Larkspur Reverb Manual.html")
file(WRITE "${home}/.larkspur/scan-cache.txt" "VST3\nComponents\nCLAP\n")
file(WRITE "${home}/.DS_Store" "Left behind by a file browser; never installed.\n")
