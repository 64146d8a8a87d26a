-- ardour7-lua ardourFinds.lua SESSION_DIR: the Linux VST and LV2 plug-ins Ardour knows in a new
-- session, one line each: "LXVST <unique id> <name>, <creator>, <path>", "LV2 <URI> <name>,
-- <creator>". Ardour lists the VST modules in its plug-in folders that it has a scan of, and
-- the LV2 plug-ins lilv finds.
assert(AudioEngine:set_backend("None (Dummy)", "", ""), "no Dummy backend")
assert(create_session(arg[1], "scan", 44100), "cannot create the session")
for p in ARDOUR.LuaAPI.list_plugins():iter() do
	if p.type == ARDOUR.PluginType.LXVST then
		print("LXVST " .. p.unique_id .. " " .. p.name .. ", " .. p.creator .. ", " .. p.path)
	elseif p.type == ARDOUR.PluginType.LV2 then
		print("LV2 " .. p.unique_id .. " " .. p.name .. ", " .. p.creator)
	end
end
close_session()
