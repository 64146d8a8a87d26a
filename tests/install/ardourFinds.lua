-- ardour7-lua ardourFinds.lua SESSION_DIR: the Linux VST plug-ins Ardour knows in a new session,
-- one line each: "LXVST <unique id> <name>, <creator>, <path>". Ardour lists what it found in its
-- plug-in folders and has a scan of.
assert(AudioEngine:set_backend("None (Dummy)", "", ""), "no Dummy backend")
assert(create_session(arg[1], "scan", 44100), "cannot create the session")
for p in ARDOUR.LuaAPI.list_plugins():iter() do
	if p.type == ARDOUR.PluginType.LXVST then
		print("LXVST " .. p.unique_id .. " " .. p.name .. ", " .. p.creator .. ", " .. p.path)
	end
end
close_session()
