-- Loads the session render.lua saved and exports it again (reloaded.wav): the plug-in's settings
-- must come back from the session file alone. Prints the parameter values Ardour restored.
--
-- ardour7-lua reload.lua SESSION_DIR EXPORT_DIR LENGTH

local session_dir, export_dir, length = arg[1], arg[2], tonumber(arg[3])
local start = 22050 -- as in render.lua

assert(AudioEngine:set_backend("None (Dummy)", "", ""), "no Dummy backend")
local s = load_session(session_dir, "hvtremolo")
assert(s, "cannot load the session")
-- The track's second plug-in; the first is the test signal.
local fx = s:route_by_name("Tremolo"):nth_plugin(1)
assert(not fx:isnil() and fx:display_name() == "HvTremolo 32-Bit", "the plug-in did not come back")
for i = 0, 5 do
	print(string.format("hvt:restored %d %.9g", i, ARDOUR.LuaAPI.get_processor_param(fx, i)))
end

local e = s:simple_export()
e:set_name("reloaded")
e:set_folder(export_dir)
e:set_range(0, start + length)
assert(e:set_preset("5e0f5c1a-8d7b-4a51-9f3e-4d2b1c0a9e77"), "no float WAV export preset")
assert(e:run_export(), "export failed")
print("hvt:exported reloaded")
close_session()
