# What of others is in the programs of a release: which library is what is said beside the library in dependencies.cmake, in
# which programs it is follows from what these link. The bill of materials (CycloneDX, JSON) is made of both.
#
# gputune_component(<target> NAME <name> VERSION <version> PURL <purl> SOURCE <url> LICENSE <SPDX>|LICENSE_NAME <text>)
#
#   Programs that link the target have this component in them. PURL (https://github.com/package-url/purl-spec) is what stands
#   before the version. LICENSE is an identifier or an expression of SPDX, LICENSE_NAME what none says.
#
# gputune_header_version(<variable> <header> <macro>)  The version that a header below the third-party sources defines in
#                                                      macros in whose name @ stands for MAJOR, MINOR, PATCH. What a package
#                                                      has set stays.
# gputune_bill_of_materials(<file>)                    Writes it. The programs are those of gputune_split_debug, by their
#                                                      targets' names, which are the same for both widths.
function(gputune_component target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "NAME;VERSION;PURL;SOURCE;LICENSE;LICENSE_NAME" "")
    if(NOT arg_VERSION)
        message(FATAL_ERROR "The version of ${arg_NAME} is not known: neither its CMake package nor its header tells it")
    endif()
    if(arg_LICENSE_NAME)
        set(licence "{\"license\": {\"name\": \"${arg_LICENSE_NAME}\"}}")
    elseif(arg_LICENSE MATCHES " ")
        set(licence "{\"expression\": \"${arg_LICENSE}\"}")
    else()
        set(licence "{\"license\": {\"id\": \"${arg_LICENSE}\"}}")
    endif()
    string(CONCAT component "{\"type\": \"library\", \"bom-ref\": \"${arg_NAME}\", \"name\": \"${arg_NAME}\", "
        "\"version\": \"${arg_VERSION}\", \"licenses\": [${licence}], \"purl\": \"${arg_PURL}${arg_VERSION}\", "
        "\"externalReferences\": [{\"type\": \"website\", \"url\": \"${arg_SOURCE}\"}]}")
    set_property(GLOBAL APPEND PROPERTY GPUTUNE_COMPONENTS "${arg_NAME}")
    set_property(GLOBAL PROPERTY "GPUTUNE_COMPONENT_${arg_NAME}" "${component}")
    set_property(GLOBAL PROPERTY "GPUTUNE_COMPONENT_TARGET_${arg_NAME}" "${target}")
endfunction()

# The same of a text with the definitions.
function(gputune_macro_version variable text macro)
    set(version "")
    foreach(part MAJOR MINOR PATCH BUGFIX)
        string(REPLACE @ ${part} name "${macro}")
        if(text MATCHES "define +${name} +\\(?([0-9]+)")
            list(APPEND version ${CMAKE_MATCH_1})
        endif()
    endforeach()
    list(JOIN version "." version)
    set(${variable} "${version}" PARENT_SCOPE)
endfunction()

function(gputune_header_version variable header macro)
    if(NOT ${variable} AND EXISTS "${GPUTUNE_DEPS_DIR}/${header}")
        file(READ "${GPUTUNE_DEPS_DIR}/${header}" text)
        gputune_macro_version(version "${text}" ${macro})
        set(${variable} "${version}" PARENT_SCOPE)
    endif()
endfunction()

# All targets that a target links, directly or not.
function(gputune_linked_targets target variable)
    set(found "")
    set(waiting ${target})
    while(waiting)
        list(POP_FRONT waiting next)
        # Names in wrappings such as $<LINK_ONLY:name>, and system libraries, which are no targets.
        string(REGEX REPLACE "^[$]<LINK_ONLY:(.*)>$" "\\1" next "${next}")
        if(NOT TARGET ${next} OR next IN_LIST found)
            continue()
        endif()
        list(APPEND found ${next})
        foreach(property LINK_LIBRARIES INTERFACE_LINK_LIBRARIES)
            get_target_property(libraries ${next} ${property})
            if(libraries)
                list(APPEND waiting ${libraries})
            endif()
        endforeach()
        get_target_property(aliased ${next} ALIASED_TARGET)
        if(aliased)
            list(APPEND waiting ${aliased})
        endif()
    endwhile()
    set(${variable} "${found}" PARENT_SCOPE)
endfunction()

function(gputune_bill_of_materials file)
    get_property(names GLOBAL PROPERTY GPUTUNE_COMPONENTS)
    get_property(programs GLOBAL PROPERTY GPUTUNE_RELEASED_PROGRAMS)
    set(components "")
    set(dependencies "")
    set(used "")
    foreach(program IN LISTS programs)
        get_target_property(targetType ${program} TYPE)
        set(type library)
        if(targetType STREQUAL "EXECUTABLE")
            set(type application)
        endif()
        string(CONCAT component "{\"type\": \"${type}\", \"bom-ref\": \"${program}\", \"name\": \"${program}\", "
            "\"version\": \"${PROJECT_VERSION}\"}")
        list(APPEND components "${component}")
        gputune_linked_targets(${program} linked)
        set(parts "")
        foreach(name IN LISTS names)
            get_property(target GLOBAL PROPERTY "GPUTUNE_COMPONENT_TARGET_${name}")
            if(target IN_LIST linked)
                list(APPEND parts "\"${name}\"")
                list(APPEND used "${name}")
            endif()
        endforeach()
        list(JOIN parts ", " parts)
        list(APPEND dependencies "{\"ref\": \"${program}\", \"dependsOn\": [${parts}]}")
    endforeach()
    foreach(name IN LISTS names)
        if(name IN_LIST used)
            get_property(component GLOBAL PROPERTY "GPUTUNE_COMPONENT_${name}")
            list(APPEND components "${component}")
        endif()
    endforeach()
    list(TRANSFORM programs REPLACE "(.+)" "\"\\1\"")
    list(JOIN programs ", " programs)
    list(PREPEND dependencies "{\"ref\": \"release\", \"dependsOn\": [${programs}]}")
    list(JOIN components ",\n    " components)
    list(JOIN dependencies ",\n    " dependencies)
    file(CONFIGURE OUTPUT "${file}" @ONLY NEWLINE_STYLE UNIX CONTENT [[{
  "$schema": "http://cyclonedx.org/schema/bom-1.6.schema.json",
  "bomFormat": "CycloneDX",
  "specVersion": "1.6",
  "version": 1,
  "metadata": {
    "component": {"type": "library", "bom-ref": "release", "name": "@PROJECT_NAME@", "version": "@PROJECT_VERSION@",
      "description": "@PROJECT_DESCRIPTION@", "licenses": [{"license": {"id": "MIT"}}]}
  },
  "components": [
    @components@
  ],
  "dependencies": [
    @dependencies@
  ]
}
]])
endfunction()
