ardour {
	["type"]    = "dsp",
	name        = "HvTremolo Test Signal",
	category    = "Utility",
	license     = "MIT",
	author      = "HvTremolo tests",
	description = [[Silence up to the start sample, then a fixed pseudo-random signal. Each sample
is a function of its transport position alone, so two exports of a range carry the same signal
whatever Ardour processed before them. Every value is k / 65536 for an integer k, exact in a float.]]
}

-- The first sample of the signal; the tests pass the same number to the render script.
local start = 22050

function dsp_ioconfig ()
	return { { audio_in = 0, audio_out = 2 } }
end

function dsp_run (ins, outs, n_samples)
	local position = Session:transport_sample ()
	local rolling = Session:transport_rolling ()
	for c = 1, #outs do
		local samples = outs[c]:array ()
		for s = 1, n_samples do
			local n = position + s - 1
			if rolling and n >= start then
				samples[s] = (((n * 40503 + c * 977) % 65536) - 32768) / 65536
			else
				samples[s] = 0
			end
		end
	end
end
